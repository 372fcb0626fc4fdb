#pragma once
// Text helpers and ICU regular expressions (look-behind and look-ahead as ICU has them).

#include <QString>
#include <QStringList>

namespace quendle {

QStringList lumregextremeray(const QString& text, const QString& regex); // every whole match
QString lumregextremestr(const QString& text, const QString& regex);     // first match or ""
// The match that starts exactly at pos, or "" when none does; look-behind sees the text
// before pos.
QString lumregexmatchat(const QString& text, const QString& regex, qsizetype pos);
QStringList lumregexsplit(const QString& text, const QString& regex);
// The matches of an expression that stays within a line (no "\n" in it, and "." stops at
// line ends), looked for only on the lines that hold key: the answers of lumregextremeray
// (or, with firstonly, of lumregextremestr) on the whole text, without a text of endless
// near-misses making every attempt scan the rest of the text. Lines longer than maxline
// (when it is not negative) are passed over.
QStringList lumregexonlines(const QString& text, QStringView key, const QString& regex, bool firstonly,
                            qsizetype maxline = -1);
QString lumregexreplace(const QString& text, const QString& regex, const QString& replacement);
bool lumregexvalid(const QString& regex);

// The short name of a line: the one or two capitalised words directly before " Line"
// ("T1 North Shore & Western Line" -> "Western"), or "" when there are none. Tiles and
// the trackwork's line lookups both match line names by it.
QString abbreviatelinename(const QString& name);

QString lumstrreplace(const QString& text, const QString& find, const QString& replacement);
QString removespacesfromstring(const QString& text);
bool isthisinthat(const QString& a, const QString& b);
QString raytostring(const QStringList& list);   // "\n" then each element followed by "\n"
QString lumraytostr(const QStringList& list);   // ",a,b,c"
QString lumdisplaymutearray(const QStringList& list); // always "zbzbzb"

// Word overlap of two names: true when more than half of a's words (split at " ") occur
// in b, or when at least as many of them occur in b as b has words.
bool matchatleasthalfofwords(const QString& a, const QString& b);

// Leading integer of a text as the table and preference readers take it:
// leading blanks skipped, optional sign, digits up to the first non-digit; 0 when none;
// clamped to the 32-bit range.
int intvalue(const QString& text);
// Leading decimal number (for coordinates); 0 when none.
float floatvalue(const QString& text);
// A map coordinate in degrees: floatvalue, but a value no longitude or latitude can take
// (beyond 360, or not finite) reads as 0, as an unknown "?" does.
float coordvalue(const QString& text);

// The debug alerts show values as a property-list description writes them: a plain word
// bare, anything else quoted with its quotes and backslashes escaped; nesting indented by
// four spaces a level.
QString describevalue(const QString& value);
QString describeindent(int level);

} // namespace quendle
