// A letter's table as an HTML table.
#pragma once

#include "output/html/html_context.h"
#include "platform/richtext/document.h"

namespace tenora::html {

// Appends to the context's HTML; `depth` counts the tables around this one.
void WriteTable(HtmlContext& context, const richtext::Table& table, const Surroundings& around,
                int depth);

}  // namespace tenora::html
