// A table file as the reader and `table check` take it: validity, the header date, every
// line header and colour, and the rows of every line for every day digit.

#include "fuzzsupport.h"

#include "timetable/tablefile.h"
#include "util/files.h"

#include <QSet>

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = fuzz::text(data, size);
    const QStringList lines = splittablelines(text);
    tabledatetodate(datefromtablelines(lines));

    QSet<QString> names;
    for (const QString& l : lines) {
        if (!l.contains(QLatin1String("line name")))
            continue;
        const QStringList pieces = l.split('"');
        if (pieces.size() > 4) {
            names.insert(pieces[1]);
            hexvaltoint(pieces[3].mid(1));
        }
    }
    // The index answers exactly as the single pass over the lines does.
    const TableIndex index(lines);
    names.insert(QString());
    for (const QString& name : names)
        for (int digit = 0; digit <= 7; ++digit)
            fuzz::require(index.linetimes(name, digit) == linetimesfromlines(lines, name, digit),
                          "indexed rows equal the single pass");

    // `table check`, and the validity the folder set-up relies on.
    const TableSummary summary = describetabletext(text);
    fuzz::require(summary.valid == summary.why.isEmpty(), "an invalid table says why");
    return 0;
}
