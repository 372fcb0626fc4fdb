#include "timetable/tablefile.h"

#include "util/dates.h"
#include "util/files.h"
#include "util/text.h"

#include <QFile>
#include <QFileInfo>

#include <QSet>

#include <algorithm>
#include <unordered_map>

#include <sys/stat.h>

namespace quendle {

QStringList splittablelines(const QString& text)
{
    if (text.contains('\n'))
        return text.split('\n');
    return text.split('\r');
}

bool isthisavalidtable(const QString& path) { return isthisavalidtabletext(readfile(path)); }

bool isthisavalidtabletext(const QString& text)
{
    const QStringList lines = splittablelines(text);
    int timetables = 0;
    int lineNames = 0;
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("timetable")))
            ++timetables;
        if (l.contains(QLatin1String("line name")))
            ++lineNames;
    }
    return timetables > 1 && lines.size() >= 6 && lineNames >= 2;
}

QString getdatefromtablefile(const QString& path)
{
    return datefromtablelines(splittablelines(readfile(path)));
}

QString datefromtablelines(const QStringList& lines)
{
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("date"))) {
            const QStringList pieces = l.split('"');
            if (pieces.size() > 3)
                return pieces[3];
            break;
        }
    }
    return QStringLiteral("??");
}

Date tabledatetodate(const QString& text)
{
    QStringList pieces = text.split(' ');
    if (pieces.size() < 5)
        pieces = QStringLiteral("22 nov 1800").split(' ');
    CivilTime c;
    c.day = intvalue(pieces[0]);
    c.month = monthnametonum(pieces[1]);
    c.year = intvalue(pieces[2]);
    return datefromcivil(c);
}

Date getnsdatefromtablefile(const QString& path)
{
    return tabledatetodate(getdatefromtablefile(path));
}

Rgba hexvaltoint(const QString& hex6)
{
    bool ok = false;
    const uint v = hex6.toUInt(&ok, 16);
    if (!ok || hex6.isEmpty())
        return Rgba{0, 0, 0, 1};
    return Rgba{((v >> 16) & 0xff) / 255.0, ((v >> 8) & 0xff) / 255.0, (v & 0xff) / 255.0, 1};
}

int hexvaltointint(const QString& hex)
{
    bool ok = false;
    const int v = hex.toInt(&ok, 16);
    return ok ? v : 0;
}

QString inttohexxhex(int value)
{
    return QString::number(static_cast<uint>(value), 16).toUpper();
}

bool isthisavalidcompressedtable(const QString& fileName)
{
    return fileName.contains(QLatin1String("day"));
}

int javadowtoobcdow(int calendarWeekday)
{
    switch (calendarWeekday) {
    case 1: return 0;
    case 2: return 1;
    case 3: return 2;
    case 4: return 3;
    case 5: return 4;
    case 6: return 6;   // Friday reads the block that holds 6, as the tables have always been read
    case 7: return 6;
    default: return calendarWeekday;
    }
}

int convdowstrtoint(const QString& dayName)
{
    static const char* const names[] = {"Sunday", "Monday", "Tuesday", "Wednesday",
                                         "Thursday", "Friday", "Saturday"};
    for (int i = 0; i < 7; ++i)
        if (dayName == QLatin1String(names[i]))
            return i;
    return -1;
}

bool isthisapuhol(Date) { return false; }

static Row rowfromline(const QString& line)
{
    const QString first = line.section('}', 0, 0);
    Row row;
    row.reserve(32);
    for (const QString& piece : first.split(',')) {
        const int t = intvalue(piece);
        // A time no clock shows (negative, or past 99 hours) reads as "does not stop here".
        row.push_back(t < -1 || t > kMaxTableTime ? -1 : t);
    }
    return row;
}

Rows linetimesfromlines(const QStringList& lines, const QString& lineName, int dayDigit)
{
    Rows rows;
    bool inLine = false, forwards = false, inDay = false;
    const QString digit = QString::number(dayDigit);
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("line")))
            inLine = !lineName.isEmpty() && l.contains(lineName);
        if (l.contains(QLatin1String("forwards")) && inLine)
            forwards = true;
        if (l.contains(QLatin1String("/day")) && inDay)
            break;
        if (inDay)
            rows.push_back(rowfromline(l));
        if (inLine && forwards && l.contains(QLatin1String("day")) && l.contains(digit))
            inDay = true;
    }
    return rows;
}

namespace {

// Aho-Corasick over UTF-16 code units: which of many identities each text holds, in one
// pass over the texts.
class Automaton {
public:
    explicit Automaton(const std::vector<QString>& patterns)
    {
        nodes_.emplace_back();
        for (int p = 0; p < static_cast<int>(patterns.size()); ++p) {
            int at = 0;
            for (const QChar ch : patterns[p]) {
                const quint64 key = keyof(at, ch.unicode());
                auto it = next_.find(key);
                if (it == next_.end()) {
                    nodes_.emplace_back();
                    it = next_.emplace(key, static_cast<int>(nodes_.size()) - 1).first;
                    children_[at].push_back({ch.unicode(), it->second});
                }
                at = it->second;
            }
            nodes_[at].pattern = p;
        }
        // Breadth first: a node's fall-back is settled before its children's.
        std::vector<int> queue{0};
        for (size_t q = 0; q < queue.size(); ++q) {
            const int u = queue[q];
            for (const auto& [ch, v] : children_[u]) {
                int f = nodes_[u].fail;
                while (u != 0 && f != 0 && step(f, ch) < 0)
                    f = nodes_[f].fail;
                const int g = u == 0 ? 0 : step(f, ch);
                nodes_[v].fail = g < 0 ? 0 : g;
                const Node& fv = nodes_[nodes_[v].fail];
                nodes_[v].output = fv.pattern >= 0 ? nodes_[v].fail : fv.output;
                queue.push_back(v);
            }
        }
    }

    // Calls found(pattern) for every pattern occurring in text, possibly more than once;
    // false (early) when more than budget reports were made.
    template <typename F>
    bool scan(const QString& text, long long& budget, F found) const
    {
        int at = 0;
        for (const QChar ch : text) {
            int n;
            while ((n = step(at, ch.unicode())) < 0 && at != 0)
                at = nodes_[at].fail;
            at = n < 0 ? 0 : n;
            for (int o = nodes_[at].pattern >= 0 ? at : nodes_[at].output; o > 0; o = nodes_[o].output) {
                if (--budget < 0)
                    return false;
                found(nodes_[o].pattern);
            }
        }
        return true;
    }

private:
    struct Node {
        int fail = 0;
        int output = 0;    // nearest node down the fall-backs that ends a pattern; 0 none
        int pattern = -1;
    };
    static quint64 keyof(int node, char16_t ch) { return (quint64(node) << 16) | ch; }
    int step(int node, char16_t ch) const
    {
        const auto it = next_.find(keyof(node, ch));
        return it == next_.end() ? -1 : it->second;
    }

    std::vector<Node> nodes_;
    std::unordered_map<quint64, int> next_;
    std::unordered_map<int, std::vector<std::pair<char16_t, int>>> children_;
};

quint16 digitsof(const QString& line)
{
    quint16 bits = 0;
    for (const QChar ch : line)
        if (ch >= QLatin1Char('0') && ch <= QLatin1Char('9'))
            bits |= quint16(1u << (ch.unicode() - '0'));
    return bits;
}

} // namespace

TableIndex::TableIndex(const QStringList& lines) : lines_(lines)
{
    for (int i = 0; i < lines.size(); ++i) {
        const QString& l = lines[i];
        if (l.contains(QLatin1String("line"))) {
            if (!segments_.empty())
                segments_.back().end = i;
            segments_.push_back({});
            segments_.back().head = i;
        }
        if (l.contains(QLatin1String("/day")))
            slashDays_.push_back(i);
        if (segments_.empty())
            continue;   // before the first mention of "line" no block belongs to any line
        Segment& seg = segments_.back();
        if (seg.firstForwards < 0 && l.contains(QLatin1String("forwards")))
            seg.firstForwards = i;
        if (l.contains(QLatin1String("day"))) {
            seg.dayLines.push_back(i);
            seg.dayDigits.push_back(digitsof(l));
        }
    }
    if (!segments_.empty())
        segments_.back().end = static_cast<int>(lines.size());
    findcontainment();
}

void TableIndex::findcontainment()
{
    // The identities a recalculation can ask about: those of the line headers.
    std::vector<QString> names;
    QHash<QString, int> ids;
    for (const Segment& seg : segments_) {
        const QString& l = lines_[seg.head];
        if (!l.contains(QLatin1String("line name")))
            continue;
        const QString name = l.section('"', 1, 1);
        if (!name.isEmpty() && !ids.contains(name)) {
            ids.insert(name, static_cast<int>(names.size()));
            names.push_back(name);
        }
    }
    if (names.empty()) {
        containmentComplete_ = true;
        return;
    }
    const Automaton automaton(names);
    // Most heads repeat ("</line>"): each distinct text is scanned once.
    QHash<QString, std::vector<int>> found;   // head text -> identities it holds
    std::vector<std::vector<int>> holding(names.size());
    std::vector<int> lastSeg(names.size(), -1);
    std::vector<int> lastText(names.size(), -1);   // stamps, so each text lists a name once
    int texts = 0;
    long long budget = 4LL * lines_.size() + 100000;
    for (int s = 0; s < static_cast<int>(segments_.size()); ++s) {
        const QString& head = lines_[segments_[s].head];
        auto it = found.find(head);
        if (it == found.end()) {
            std::vector<int> in;
            const int text = texts++;
            const bool ok = automaton.scan(head, budget, [&](int p) {
                if (lastText[p] != text) {
                    lastText[p] = text;
                    in.push_back(p);
                }
            });
            if (!ok)
                return;   // too many answers: ask the heads one question at a time
            it = found.insert(head, std::move(in));
        }
        for (const int p : *it) {
            if (lastSeg[p] == s)
                continue;
            lastSeg[p] = s;
            if (--budget < 0)
                return;
            holding[p].push_back(s);
        }
    }
    for (int p = 0; p < static_cast<int>(names.size()); ++p)
        holding_.insert(names[p], std::move(holding[p]));
    containmentComplete_ = true;
}

std::vector<int> TableIndex::segmentsholding(const QString& lineName) const
{
    if (containmentComplete_) {
        const auto it = holding_.constFind(lineName);
        if (it != holding_.constEnd())
            return *it;
    }
    std::vector<int> out;
    for (int s = 0; s < static_cast<int>(segments_.size()); ++s)
        if (lines_[segments_[s].head].contains(lineName))
            out.push_back(s);
    return out;
}

Rows TableIndex::linetimes(const QString& lineName, int dayDigit) const
{
    if (lineName.isEmpty())
        return {};
    const QString digitText = QString::number(dayDigit);
    const bool oneDigit = dayDigit >= 0 && dayDigit <= 9;
    bool forwards = false;
    int dayLine = -1;
    for (const int s : segmentsholding(lineName)) {
        const Segment& seg = segments_[s];
        int from = seg.head;
        if (!forwards) {
            if (seg.firstForwards < 0)
                continue;
            forwards = true;   // and it stays so, in this segment and every later one
            from = seg.firstForwards;
        }
        const auto first = std::lower_bound(seg.dayLines.begin(), seg.dayLines.end(), from);
        for (auto it = first; it != seg.dayLines.end(); ++it) {
            const size_t k = static_cast<size_t>(it - seg.dayLines.begin());
            if (oneDigit ? (seg.dayDigits[k] >> dayDigit) & 1 : lines_[*it].contains(digitText)) {
                dayLine = *it;
                break;
            }
        }
        if (dayLine >= 0)
            break;
    }
    if (dayLine < 0)
        return {};
    const auto close = std::upper_bound(slashDays_.begin(), slashDays_.end(), dayLine);
    const int end = close == slashDays_.end() ? static_cast<int>(lines_.size()) : *close;
    Rows rows;
    rows.reserve(end - dayLine - 1);
    for (int i = dayLine + 1; i < end; ++i)
        rows.push_back(rowfromline(lines_[i]));
    return rows;
}

// Size and modification time of a file, -1 for the size when there is none. A plain
// stat: this runs for every line, leg and day of every recalculation.
static void filestamp(const QString& path, qint64* size, qint64* mtimeNs)
{
    if (path.startsWith(QLatin1Char(':'))) {   // compiled-in resources never change
        const QFileInfo info(path);
        *size = info.exists() ? info.size() : -1;
        *mtimeNs = 0;
        return;
    }
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode)) {
        *size = -1;
        *mtimeNs = 0;
        return;
    }
    *size = st.st_size;
    *mtimeNs = static_cast<qint64>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

TableCache::Entry& TableCache::entry(const QString& path)
{
    qint64 size = -1, mtime = 0;
    filestamp(path, &size, &mtime);
    Entry& e = files_[path];
    if (e.size != size || e.mtimeNs != mtime || (e.lines.isEmpty() && size > 0)) {
        e.size = size;
        e.mtimeNs = mtime;
        e.index.reset();
        e.lines = size < 0 ? QStringList() : splittablelines(readfile(path));
        e.answers.clear();
    }
    return e;
}

const QStringList& TableCache::lines(const QString& path) { return entry(path).lines; }

RowsPtr TableCache::linetimes(const QString& path, const QString& lineName, int dayDigit)
{
    Entry& e = entry(path);
    const QString key = lineName + QChar(0x1f) + QString::number(dayDigit);
    auto it = e.answers.constFind(key);
    if (it != e.answers.constEnd())
        return *it;
    if (!e.index)
        e.index = std::make_shared<const TableIndex>(e.lines);
    auto rows = std::make_shared<const Rows>(e.index->linetimes(lineName, dayDigit));
    e.answers.insert(key, rows);
    return rows;
}

void TableCache::clear() { files_.clear(); }

} // namespace quendle

namespace quendle {

QString tabledateproblem(const QString& text)
{
    const QStringList pieces = text.split(' ');
    if (pieces.size() < 5)
        return QStringLiteral("it has fewer than five words, so it reads as the sentinel of 1800");
    auto number = [](const QString& t) {
        return !t.isEmpty() && std::all_of(t.begin(), t.end(), [](QChar c) { return c >= '0' && c <= '9'; });
    };
    if (!number(pieces[0]))
        return QStringLiteral("the day \"%1\" is not a number").arg(pieces[0]);
    if (monthnametonum(pieces[1]) == 12 && pieces[1] != QLatin1String("December"))
        return QStringLiteral("\"%1\" is not a full month name, so it reads as December").arg(pieces[1]);
    if (!number(pieces[2]))
        return QStringLiteral("the year \"%1\" is not a number").arg(pieces[2]);
    return QString();
}

TableSummary describetabletext(const QString& text)
{
    TableSummary out;
    const QStringList lines = splittablelines(text);
    int timetables = 0, lineNames = 0;
    QSet<QString> names;
    TableSummary::Line* current = nullptr;
    TableSummary::DayBlock* day = nullptr;
    for (const QString& l : lines) {
        if (l.contains(QLatin1String("timetable")))
            ++timetables;
        if (l.contains(QLatin1String("line name"))) {
            ++lineNames;
            const QStringList pieces = l.split('"');
            TableSummary::Line line;
            line.name = pieces.value(1);
            line.colour = pieces.value(3);
            for (const QString& stop : pieces.value(5).split(',')) {
                const QStringList s = stop.split('|');
                if (s.size() > 2) {
                    ++line.stops;
                    names.insert(s[0]);
                }
            }
            out.lines.push_back(line);
            current = &out.lines.back();
            day = nullptr;
        } else if (current && l.contains(QLatin1String("<day"))) {
            current->days.push_back({lumregextremestr(l, QStringLiteral("(?<=num=\")[0-9]*")), 0});
            day = &current->days.back();
        } else if (l.contains(QLatin1String("/day"))) {
            day = nullptr;
        } else if (day && l.contains('}')) {
            ++day->rows;
        }
    }
    out.stations = names.size();
    out.datetext = datefromtablelines(lines);
    out.date = tabledatetodate(out.datetext);
    QStringList why;
    if (timetables <= 1)
        why << QStringLiteral("%1 lines mention \"timetable\" (a header and a trailer are needed)").arg(timetables);
    if (lines.size() < 6)
        why << QStringLiteral("it has %1 lines (at least 6 are needed)").arg(lines.size());
    if (lineNames < 2)
        why << QStringLiteral("it has %1 line headers (at least 2 are needed)").arg(lineNames);
    out.valid = timetables > 1 && lines.size() >= 6 && lineNames >= 2;
    out.why = out.valid ? QString() : why.join(QStringLiteral("; "));
    const QString problem = tabledateproblem(out.datetext);
    if (!problem.isEmpty()) {
        QString w = QStringLiteral("DATE \"%1\" does not read as a date: %2").arg(out.datetext, problem);
        if (out.datetext.split(' ').size() < 5)
            w += QStringLiteral("; such a table counts as older than the built-in one, which replaces it at "
                                "the next start when it is installed as SydneyTrains.vq");
        out.warnings << w;
    }
    return out;
}

TableSummary describetable(const QString& path)
{
    QString why;
    QByteArray bytes;
    if (!readfilebytes(path, &bytes, &why)) {
        TableSummary out;
        out.why = QStringLiteral("the file %1").arg(why);
        out.datetext = QStringLiteral("??");
        out.date = tabledatetodate(out.datetext);
        return out;
    }
    return describetabletext(decodefiletext(bytes));
}

} // namespace quendle
