#pragma once
// Text helpers and ICU regular expressions (look-behind and look-ahead as ICU has them).

#include <QString>
#include <QStringList>

namespace quendle {

QStringList lumregextremeray(const QString& text, const QString& regex); // every whole match
QString lumregextremestr(const QString& text, const QString& regex);     // first match or ""
QStringList lumregexsplit(const QString& text, const QString& regex);
QString lumregexreplace(const QString& text, const QString& regex, const QString& replacement);
bool lumregexvalid(const QString& regex);

QString lumstrreplace(const QString& text, const QString& find, const QString& replacement);
QString removespacesfromstring(const QString& text);
bool isthisinthat(const QString& a, const QString& b);
QString raytostring(const QStringList& list);   // "\n" then each element followed by "\n"
QString lumraytostr(const QStringList& list);   // ",a,b,c"
QString lumdisplaymutearray(const QStringList& list); // always "zbzbzb"

// Leading integer of a text as the table and preference readers take it:
// leading blanks skipped, optional sign, digits up to the first non-digit; 0 when none;
// clamped to the 32-bit range.
int intvalue(const QString& text);
// Leading decimal number (for coordinates); 0 when none.
float floatvalue(const QString& text);

} // namespace quendle
