// Protected text (\protect), which typing and commands leave as it is.
#pragma once

#include <QTextDocument>
#include <QTextFormat>

namespace tenora {

bool IsProtected(const QTextFormat& format);
// True when replacing the range would change protected text. An empty range stands for typing
// there, which is free at the edges of such text.
bool TouchesProtected(const QTextDocument& document, int start, int end);

}  // namespace tenora
