#pragma once
// The cheap text-width estimate the whole display lays out with: text is never
// measured with a font. Each character weighs a base of 1.09 plus the weights of every
// row of the table that lists it; the layout constants are tuned to exactly this.

#include <QString>

namespace quendle {

int scoremystr(const QString& text);          // trunc(total × 1.2)
float scoremystrfloat(const QString& text);   // the total, from a table that also weighs "s"
// The text followed by enough blanks to reach the target score.
QString givestranevenscore(const QString& text, int target);
// The text itself, whatever the limit.
inline QString cutoffstricely(const QString& text, int) { return text; }

} // namespace quendle
