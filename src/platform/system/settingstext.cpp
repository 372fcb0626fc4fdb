#include "platform/system/settingstext.h"

#include <QByteArrayView>
#include <QStringDecoder>
#include <QStringList>

namespace quendle {

namespace {

bool isspacebyte(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

bool ishex(char16_t c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

int hexvalue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Text that must be UTF-8; *bad is set when it is not.
QString fromutf8(QByteArrayView bytes, bool* bad)
{
    // A byte order mark inside a value is part of it (the file's own was dropped first).
    QStringDecoder utf8(QStringDecoder::Utf8, QStringConverter::Flag::ConvertInitialBom);
    QString s = utf8(bytes);
    if (utf8.hasError())
        *bad = true;
    return s;
}

// One logical line from *pos: leading white space and comment lines (";" first) skipped, a
// quoted part may run over line ends, a backslash takes the next byte (a line end too) with
// it, and an unquoted ";" ends the line (the rest is a comment). *eq: the first "=" outside
// quotes, or -1. false at the end of the text.
bool nextline(QByteArrayView d, qsizetype* pos, qsizetype* start, qsizetype* len, qsizetype* eq, bool* openquote)
{
    const qsizetype n = d.size();
    bool inquotes = false;
    *eq = -1;
    qsizetype s = *pos;
    while (s < n && isspacebyte(d[s]))
        ++s;
    qsizetype i = s;
    while (i < n) {
        const char ch = d[i++];
        if (ch == '=') {
            if (!inquotes && *eq == -1)
                *eq = i - 1;
        } else if (ch == '\n' || ch == '\r') {
            if (!inquotes) {
                --i;
                break;
            }
        } else if (ch == '\\') {
            if (i < n) {
                const char next = d[i++];
                if (i < n && ((next == '\n' && d[i] == '\r') || (next == '\r' && d[i] == '\n')))
                    ++i;
            }
        } else if (ch == '"') {
            inquotes = !inquotes;
        } else if (ch == ';') {
            if (i == s + 1) {   // a comment line
                while (i < n && d[i] != '\n' && d[i] != '\r')
                    ++i;
                while (i < n && isspacebyte(d[i]))
                    ++i;
                s = i;
            } else if (!inquotes) {
                --i;
                break;
            }
        }
    }
    if (inquotes)
        *openquote = true;
    *pos = i;
    *start = s;
    *len = i - s;
    return *len > 0;
}

// A key or section name: "\" stands for "/", "%XX" and "%UXXXX" for one UTF-16 unit.
QString unescapekey(QByteArrayView key, bool* bad)
{
    const QString decoded = fromutf8(key, bad);
    QString out;
    out.reserve(decoded.size());
    const qsizetype n = decoded.size();
    for (qsizetype i = 0; i < n;) {
        const QChar ch = decoded[i];
        if (ch == u'\\') {
            out += u'/';
            ++i;
            continue;
        }
        if (ch != u'%' || i == n - 1) {
            out += ch;
            ++i;
            continue;
        }
        qsizetype first = i + 1;
        int digits = 2;
        if (decoded[first] == u'U') {
            ++first;
            digits = 4;
        }
        bool ok = first + digits <= n;
        const ushort unit = ok ? QStringView(decoded).sliced(first, digits).toUShort(&ok, 16) : 0;
        if (!ok) {
            out += u'%';
            ++i;
            continue;
        }
        out += QChar(unit);
        i = first + digits;
    }
    return out;
}

// "a//b/" is "a/b", as Qt's settings read it; "" when nothing is left.
QString normalkey(const QString& key)
{
    if (!key.startsWith(u'/') && !key.endsWith(u'/') && !key.contains(QLatin1String("//")))
        return key;
    return key.split(u'/', Qt::SkipEmptyParts).join(u'/');
}

void choptrailingspaces(QString& s, qsizetype limit)
{
    qsizetype k = s.size();
    while (k > limit && (s[k - 1] == u' ' || s[k - 1] == u'\t'))
        --k;
    s.truncate(k);
}

// A value's text: surrounding blanks dropped unless quoted, quotes joined, C-like escapes
// ("\n", "\x41", "\101"), and unquoted commas parting it into a list. true for a list.
bool unescapevalue(QByteArrayView s, QString* str, QStringList* list, bool* bad)
{
    static constexpr char kEscapes[][2] = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'},
                                           {'r', '\r'}, {'t', '\t'}, {'v', '\v'}, {'"', '"'},
                                           {'?', '?'}, {'\'', '\''}, {'\\', '\\'}};
    enum class State { SkipSpaces, Normal, Hex, Oct, End };
    const qsizetype n = s.size();
    bool islist = false;
    bool inquotes = false;
    bool quoted = false;   // the current item had quotes: its blanks stay
    char16_t escaped = 0;
    qsizetype i = 0;
    qsizetype choplimit = 0;
    State state = State::SkipSpaces;
    while (state != State::End) {
        switch (state) {
        case State::SkipSpaces:
            while (i < n && (s[i] == ' ' || s[i] == '\t'))
                ++i;
            state = State::Normal;
            break;
        case State::Normal: {
            choplimit = str->size();
            state = State::End;
            bool chop = true;
            while (i < n && state == State::End) {
                const char ch = s[i];
                if (ch == '\\') {
                    ++i;
                    if (i >= n) {
                        chop = false;
                        break;
                    }
                    const char e = s[i++];
                    bool known = false;
                    for (const auto& code : kEscapes) {
                        if (e == code[0]) {
                            *str += QLatin1Char(code[1]);
                            known = true;
                            break;
                        }
                    }
                    if (known) {
                        state = State::Normal;
                        break;
                    }
                    if (e == 'x') {
                        escaped = 0;
                        if (i >= n) {
                            chop = false;
                            break;
                        }
                        if (ishex(static_cast<unsigned char>(s[i]))) {
                            state = State::Hex;
                            break;
                        }
                    } else if (e >= '0' && e <= '7') {
                        escaped = static_cast<char16_t>(e - '0');
                        state = State::Oct;
                        break;
                    } else if (e == '\n' || e == '\r') {
                        // An escaped line end joins the next line.
                        if (i < n && (s[i] == '\n' || s[i] == '\r') && s[i] != e)
                            ++i;
                    }
                    // Any other escaped byte is dropped.
                    choplimit = str->size();
                } else if (ch == '"') {
                    ++i;
                    quoted = true;
                    inquotes = !inquotes;
                    if (!inquotes)
                        state = State::SkipSpaces;
                } else if (ch == ',' && !inquotes) {
                    if (!quoted)
                        choptrailingspaces(*str, choplimit);
                    if (!islist) {
                        islist = true;
                        list->clear();
                    }
                    list->append(*str);
                    str->clear();
                    quoted = false;
                    ++i;
                    state = State::SkipSpaces;
                } else {
                    qsizetype j = i + 1;
                    while (j < n && s[j] != '\\' && s[j] != '"' && s[j] != ',')
                        ++j;
                    *str += fromutf8(s.sliced(i, j - i), bad);
                    i = j;
                }
            }
            if (state == State::End && chop && i >= n && !quoted)
                choptrailingspaces(*str, choplimit);
            break;
        }
        case State::Hex:
            if (i >= n) {
                *str += QChar(escaped);
                state = State::End;
            } else if (const int v = hexvalue(s[i]); v >= 0) {
                escaped = static_cast<char16_t>((escaped << 4) + v);
                ++i;
            } else {
                *str += QChar(escaped);
                state = State::Normal;
            }
            break;
        case State::Oct:
            if (i >= n) {
                *str += QChar(escaped);
                state = State::End;
            } else if (s[i] >= '0' && s[i] <= '7') {
                escaped = static_cast<char16_t>((escaped << 3) + (s[i] - '0'));
                ++i;
            } else {
                *str += QChar(escaped);
                state = State::Normal;
            }
            break;
        case State::End:
            break;
        }
    }
    if (islist)
        list->append(*str);
    return islist;
}

// One value as text. "@@x" is "@x" (how a text starting with "@" is written); a byte array
// or Qt 6's NUL-holding text reads as its text; serialized values are refused (*serialized).
QString valuetext(const QString& s, bool* serialized)
{
    if (!s.startsWith(u'@'))
        return s;
    if (s.endsWith(u')')) {
        if (s.startsWith(QLatin1String("@ByteArray(")))
            return QString::fromUtf8(QStringView(s).sliced(11).chopped(1).toLatin1());
        if (s.startsWith(QLatin1String("@String(")))
            return QStringView(s).sliced(8).chopped(1).toString();
        for (const char* kind : {"@Variant(", "@DateTime(", "@Rect(", "@Size(", "@Point("}) {
            if (s.startsWith(QLatin1String(kind))) {
                *serialized = true;
                return QString();
            }
        }
        if (s == QLatin1String("@Invalid()"))
            return QString();
    }
    if (s.startsWith(QLatin1String("@@")))
        return s.sliced(1);
    return s;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

void escapekey(QStringView key, QByteArray* out)
{
    for (const QChar qc : key) {
        const char16_t ch = qc.unicode();
        if (ch == '/') {
            *out += '\\';
        } else if ((ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') || ch == '_'
                   || ch == '-' || ch == '.') {
            *out += static_cast<char>(ch);
        } else if (ch <= 0xFF) {
            *out += '%';
            *out += kHexDigits[ch / 16];
            *out += kHexDigits[ch % 16];
        } else {
            *out += "%U";
            for (int shift = 12; shift >= 0; shift -= 4)
                *out += kHexDigits[(ch >> shift) & 0xF];
        }
    }
}

void escapevalue(const QString& value, QByteArray* out)
{
    const QString s = value.startsWith(u'@') ? u'@' + value : value;
    const qsizetype start = out->size();
    bool quotes = false;
    bool hexnext = false;   // after a numeric escape a hex digit would join it
    const qsizetype n = s.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t ch = s[i].unicode();
        if (ch == ';' || ch == ',' || ch == '=')
            quotes = true;
        if (hexnext && ishex(ch)) {
            *out += "\\x" + QByteArray::number(ch, 16);
            continue;
        }
        hexnext = false;
        switch (ch) {
        case 0: *out += "\\0"; hexnext = true; break;
        case '\a': *out += "\\a"; break;
        case '\b': *out += "\\b"; break;
        case '\f': *out += "\\f"; break;
        case '\n': *out += "\\n"; break;
        case '\r': *out += "\\r"; break;
        case '\t': *out += "\\t"; break;
        case '\v': *out += "\\v"; break;
        case '"':
        case '\\':
            *out += '\\';
            *out += static_cast<char>(ch);
            break;
        default:
            if (QChar::isHighSurrogate(ch) && i + 1 < n && s[i + 1].isLowSurrogate()) {
                *out += QStringView(s).sliced(i, 2).toUtf8();
                ++i;
            } else if (ch <= 0x1F || QChar::isSurrogate(ch)) {
                // A lone surrogate has no UTF-8 form: numbered, so it reads back the same.
                *out += "\\x" + QByteArray::number(ch, 16);
                hexnext = true;
            } else if (ch < 0x80) {
                *out += static_cast<char>(ch);
            } else {
                *out += QStringView(s).sliced(i, 1).toUtf8();
            }
        }
    }
    if (quotes || (out->size() > start && (out->at(start) == ' ' || out->back() == ' '))) {
        out->insert(start, '"');
        *out += '"';
    }
}

} // namespace

SettingsText readsettingstext(const QByteArray& bytes)
{
    SettingsText result;
    bool bad = false;
    QByteArrayView d(bytes);
    if (d.startsWith("\xef\xbb\xbf"))
        d = d.sliced(3);
    QString section;   // "" or "name/"
    qsizetype pos = 0, start = 0, len = 0, eq = -1;
    bool openquote = false;
    QString str;
    QStringList list;
    while (nextline(d, &pos, &start, &len, &eq, &openquote)) {
        const QByteArrayView line = d.sliced(start, len);
        if (line.startsWith('[')) {
            qsizetype close = line.indexOf(']');
            if (close < 0) {
                bad = true;
                close = len;
            } else if (!line.sliced(close + 1).trimmed().isEmpty()) {
                bad = true;   // words after the section name would be lost
            }
            const QByteArrayView name = line.sliced(1, close - 1).trimmed();
            if (name.compare("general", Qt::CaseInsensitive) == 0) {
                section.clear();
            } else if (name.compare("%general", Qt::CaseInsensitive) == 0) {
                section = QString::fromLatin1(name.sliced(1)) + u'/';
            } else {
                section = unescapekey(name, &bad) + u'/';
            }
            continue;
        }
        if (eq < 0) {
            bad = true;
            continue;
        }
        const QString name = normalkey(unescapekey(d.sliced(start, eq - start).trimmed(), &bad));
        if (name.isEmpty()) {
            bad = true;
            continue;
        }
        const QString key = normalkey(section + name);
        str.clear();
        bool serialized = false;
        QString value;
        if (unescapevalue(d.sliced(eq + 1, start + len - eq - 1), &str, &list, &bad)) {
            for (QString& item : list)
                item = valuetext(item, &serialized);
            value = list.join(u',');
        } else {
            value = valuetext(str, &serialized);
        }
        if (serialized) {
            bad = true;
            result.values.remove(key);
            continue;
        }
        result.values.insert(key, value);
    }
    result.damaged = bad || openquote;
    return result;
}

QByteArray writesettingstext(const QMap<QString, QString>& values)
{
    // Keys without a section first, under [General]; then each section in order. Sections
    // are held as "" (General) or "/" + name, so an empty name stays apart from General.
    QMap<QString, QList<QPair<QStringView, const QString*>>> sections;
    for (auto it = values.constBegin(); it != values.constEnd(); ++it) {
        const QString& key = it.key();
        const qsizetype slash = key.indexOf(u'/');
        const QString name = slash < 0 ? QString() : u'/' + key.first(slash);
        const QStringView rest = slash < 0 ? QStringView(key) : QStringView(key).sliced(slash + 1);
        sections[name].append({rest, &it.value()});
    }
    QByteArray out;
    for (auto it = sections.constBegin(); it != sections.constEnd(); ++it) {
        if (!out.isEmpty())
            out += '\n';
        const QStringView name = it.key().isEmpty() ? QStringView() : QStringView(it.key()).sliced(1);
        if (it.key().isEmpty()) {
            out += "[General]\n";
        } else {
            out += '[';
            if (name.compare(QLatin1String("general"), Qt::CaseInsensitive) == 0)
                out += '%' + name.toLatin1();
            else
                escapekey(name, &out);
            out += "]\n";
        }
        for (const auto& [key, value] : it.value()) {
            escapekey(key, &out);
            out += '=';
            escapevalue(*value, &out);
            out += '\n';
        }
    }
    return out;
}

} // namespace quendle
