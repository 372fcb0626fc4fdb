#include "gtfs/csv.h"

#include <algorithm>
#include <cstring>

namespace quendle::gtfs {

namespace {

constexpr size_t kChunk = 1 << 16;

bool blank(char c) { return c == ' ' || c == '\t'; }

} // namespace

FeedError::FeedError(QString f, qint64 l, QString c, QString m)
    : std::runtime_error(m.toStdString()), file(std::move(f)), column(std::move(c)), message(std::move(m)), line(l)
{
}

QString FeedError::text() const
{
    QStringList where;
    if (!file.isEmpty())
        where << file;
    if (line > 0)
        where << QStringLiteral("line %1").arg(line);
    if (!column.isEmpty())
        where << QStringLiteral("column %1").arg(column);
    return where.isEmpty() ? message : where.join(QStringLiteral(", ")) + QStringLiteral(": ") + message;
}

qint64 MemorySource::read(char* buf, qint64 max)
{
    const size_t n = std::min(static_cast<size_t>(max), bytes_.size() - pos_);
    std::memcpy(buf, bytes_.data() + pos_, n);
    pos_ += n;
    return static_cast<qint64>(n);
}

CsvReader::CsvReader(ByteSource& source, QString fileName) : source_(source), file_(std::move(fileName)) {}

bool CsvReader::fill()
{
    if (eof_)
        return false;
    if (pos_ > 0) {
        buf_.erase(0, pos_);
        pos_ = 0;
    }
    const size_t old = buf_.size();
    buf_.resize(old + kChunk);
    const qint64 got = source_.read(buf_.data() + old, static_cast<qint64>(kChunk));
    if (got < 0) {
        buf_.resize(old);
        throw FeedError(file_, nextLine_, QString(),
                        QStringLiteral("cannot be read (%1)").arg(source_.errorString()));
    }
    buf_.resize(old + static_cast<size_t>(got));
    if (got == 0)
        eof_ = true;
    return got > 0;
}

bool CsvReader::readrow()
{
    if (!started_) {
        while (buf_.size() < 3 && fill()) {
        }
        if (buf_.compare(0, 3, "\xEF\xBB\xBF") == 0)
            pos_ = 3;
        started_ = true;
    }
    for (;;) {
        spans_.clear();
        scratch_.clear();
        const size_t n = buf_.size();
        size_t i = pos_;
        qint64 lines = 0;
        bool needMore = false;
        bool quotedSeen = false;
        if (i >= n) {
            if (eof_ || !fill())
                return false;
            continue;
        }
        // One field per turn; the row ends at a line end or at the end of the input.
        for (;;) {
            size_t j = i;
            while (j < n && blank(buf_[j]))
                ++j;
            size_t k;
            if (j < n && buf_[j] == '"') {
                quotedSeen = true;
                const size_t off = scratch_.size();
                k = j + 1;
                bool closed = false;
                while (k < n) {
                    const char c = buf_[k];
                    if (c == '"') {
                        if (k + 1 >= n && !eof_)
                            break;   // a doubled quote may straddle the chunk
                        if (k + 1 < n && buf_[k + 1] == '"') {
                            scratch_.push_back('"');
                            k += 2;
                            continue;
                        }
                        closed = true;
                        ++k;
                        break;
                    }
                    if (c == '\n' || (c == '\r' && (k + 1 >= n || buf_[k + 1] != '\n')))
                        ++lines;
                    scratch_.push_back(c);
                    ++k;
                }
                if (!closed) {
                    if (!eof_) {
                        needMore = true;
                        break;
                    }
                    throw FeedError(file_, nextLine_, QString(),
                                    QStringLiteral("a quoted field is never closed"));
                }
                // Anything between the closing quote and the separator is kept as written.
                while (k < n && buf_[k] != ',' && buf_[k] != '\n' && buf_[k] != '\r') {
                    if (!blank(buf_[k]))
                        scratch_.push_back(buf_[k]);
                    ++k;
                }
                spans_.push_back({true, off, scratch_.size() - off});
            } else {
                k = j;
                while (k < n && buf_[k] != ',' && buf_[k] != '\n' && buf_[k] != '\r')
                    ++k;
                size_t end = k;
                while (end > j && blank(buf_[end - 1]))
                    --end;
                spans_.push_back({false, j, end - j});
            }
            if (k >= n) {
                if (!eof_) {
                    needMore = true;
                    break;
                }
                pos_ = n;
                break;
            }
            const char c = buf_[k];
            if (c == ',') {
                i = k + 1;
                continue;
            }
            if (c == '\r') {
                if (k + 1 >= n && !eof_) {
                    needMore = true;   // the '\n' of a CRLF may be in the next chunk
                    break;
                }
                pos_ = (k + 1 < n && buf_[k + 1] == '\n') ? k + 2 : k + 1;
            } else {
                pos_ = k + 1;
            }
            ++lines;
            break;
        }
        if (needMore) {
            if (n - pos_ > kMaxRowBytes)
                throw FeedError(file_, nextLine_, QString(),
                                QStringLiteral("a row longer than %1 bytes (an unclosed quote?)").arg(kMaxRowBytes));
            fill();
            continue;
        }
        rowLine_ = nextLine_;
        nextLine_ += lines;
        // Blank lines (and lines of blanks) hold no row.
        if (spans_.size() == 1 && spans_[0].len == 0 && !quotedSeen) {
            if (pos_ >= buf_.size() && eof_)
                return false;
            continue;
        }
        fields_.clear();
        fields_.reserve(spans_.size());
        for (const Span& s : spans_)
            fields_.emplace_back((s.scratch ? scratch_.data() : buf_.data()) + s.off, s.len);
        return true;
    }
}

bool CsvReader::readheader()
{
    if (!readrow())
        return false;
    header_.clear();
    for (std::string_view f : fields_)
        header_.emplace_back(f);
    return true;
}

int CsvReader::column(std::string_view name) const
{
    for (size_t i = 0; i < header_.size(); ++i)
        if (header_[i] == name)
            return static_cast<int>(i);
    return -1;
}

int CsvReader::requirecolumn(std::string_view name) const
{
    const int c = column(name);
    if (c < 0)
        throw FeedError(file_, 1, QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())),
                        QStringLiteral("the header has no such column"));
    return c;
}

bool CsvReader::next()
{
    if (!readrow())
        return false;
    if (fields_.size() < header_.size())
        fail(static_cast<int>(fields_.size()),
             QStringLiteral("the row has %1 fields where the header names %2")
                 .arg(fields_.size())
                 .arg(header_.size()));
    return true;
}

void CsvReader::fail(int column, const QString& message) const
{
    QString name;
    if (column >= 0 && column < static_cast<int>(header_.size()))
        name = QString::fromStdString(header_[column]);
    throw FeedError(file_, rowLine_, name, message);
}

} // namespace quendle::gtfs
