#include "publisher/publish.h"

#include "timetable/tablefile.h"
#include "util/files.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace quendle {

bool isplaintablename(const QString& name)
{
    if (name.isEmpty() || name.size() > 100 || name.startsWith(QLatin1Char('.')) || name.contains(QLatin1String("..")))
        return false;
    for (QChar c : name)
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.unicode() < 0x20 || c.unicode() == 0x7f)
            return false;
    return true;
}

QString updatepagetext(const QStringList& names, const QStringList& dates, double version)
{
    QString links;
    for (const QString& n : names)
        links += QStringLiteral("<li><a href=\"%1/%2.vq\">%2</a></li>\n").arg(QLatin1String(kTablesFolderName), n);
    // The "<!WA" lines are what Quendle reads, one to a line, spaced exactly so.
    return QStringLiteral("<!DOCTYPE html>\n<html>\n<head><meta charset=\"utf-8\"><title>Quendle updates</title></head>\n"
                          "<body>\n")
        + QStringLiteral("<!WA  tablenames[%1]tablenames  >\n").arg(names.join(QLatin1Char(',')))
        + QStringLiteral("<!WA  tabledates[%1]tabledates >\n").arg(dates.join(QLatin1Char(',')))
        + QStringLiteral("<!WA  macvers[%1]macvers >\n").arg(QString::asprintf("%f", version))
        + QStringLiteral("<!WA  mobilevers[1] >\n<!WA  iphonevers[1] >\n")
        + QStringLiteral("<p>The timetable tables Quendle fetches from here:</p>\n<ul>\n") + links
        + QStringLiteral("</ul>\n</body>\n</html>\n");
}

PublishOutcome publishupdate(const QString& dir, const QStringList& tablefiles, double version)
{
    PublishOutcome out;
    QStringList texts;
    QSet<QString> seen;
    for (const QString& path : tablefiles) {
        QString why;
        const QFileInfo fi(path);
        const QString text = fi.isFile() ? readfile(path) : QString();
        const QString name = fi.fileName().section(QLatin1Char('.'), 0, 0);
        const QString date = datefromtablelines(splittablelines(text));
        if (!fi.isFile())
            why = QStringLiteral("is not a file");
        else if (!isthisavalidtabletext(text))
            why = QStringLiteral("is not a valid table (quendle-cli table check says why)");
        else if (!isplaintablename(name) || name.contains(QLatin1Char(',')) || name.contains(QLatin1Char(']')))
            why = QStringLiteral("does not make a plain table name (\"%1\")").arg(name);
        else if (seen.contains(name))
            why = QStringLiteral("has the same table name as another table given (\"%1\")").arg(name);
        else if (date == QLatin1String("??") || date.contains(QLatin1Char(',')) || date.contains(QLatin1Char(']'))
                 || date.contains(QLatin1Char('[')))
            why = QStringLiteral("has a DATE the update page cannot list (\"%1\")").arg(date);
        if (!why.isEmpty()) {
            out.why = path + " " + why;
            return out;
        }
        seen.insert(name);
        out.names << name;
        out.dates << date;
        texts << text;
    }
    if (out.names.isEmpty()) {
        out.why = QStringLiteral("no table to publish");
        return out;
    }
    const QString tables = dir + "/" + kTablesFolderName;
    if (!QDir().mkpath(tables)) {
        out.why = QStringLiteral("the folder %1 cannot be made").arg(tables);
        return out;
    }
    for (qsizetype i = 0; i < out.names.size(); ++i) {
        const QString target = tables + "/" + out.names[i] + ".vq";
        QString why;
        if (!replacefile(target, texts[i], &why)) {
            out.why = QStringLiteral("%1 cannot be written: %2").arg(target, why);
            return out;
        }
        out.tablepaths << target;
    }
    out.page = dir + "/" + kUpdatePageName;
    QString why;
    if (!replacefile(out.page, updatepagetext(out.names, out.dates, version), &why)) {
        out.why = QStringLiteral("%1 cannot be written: %2").arg(out.page, why);
        return out;
    }
    out.ok = true;
    return out;
}

} // namespace quendle
