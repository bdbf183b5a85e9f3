// Protected text (\protect), which typing and commands leave as it is.
#pragma once

#include <QTextDocument>
#include <QTextFormat>

namespace tenora {

bool IsProtected(const QTextFormat& format);
// True when replacing the range would change protected text. An empty range means typing
// there, which is allowed at the edges of such text.
bool TouchesProtected(const QTextDocument& document, int start, int end);

}  // namespace tenora
