#pragma once
// A small streaming reader for the comma-separated files of a GTFS feed. It reads
// the quirks real feeds have: a byte-order mark, CRLF, LF or lone CR line ends, a
// missing final newline, quoted fields holding commas, line ends and doubled quotes,
// blank lines, and rows longer than the header (the extra fields are ignored).
// Columns are found by name, so their order and any unknown ones do not matter.

#include <QString>
#include <QStringList>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quendle::gtfs {

// What is wrong with a feed, and where: the file, the line and the column when known.
class FeedError : public std::runtime_error {
public:
    FeedError(QString file, qint64 line, QString column, QString message);
    QString file, column, message;
    qint64 line = 0;
    // "stop_times.txt, line 12, column departure_time: ..." (only the parts known).
    QString text() const;
};

// Bytes of one file, read front to back.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Up to max bytes into buf; 0 at the end; -1 on a read error.
    virtual qint64 read(char* buf, qint64 max) = 0;
    virtual QString errorString() const { return {}; }
};

// A source over bytes held in memory (tests, fuzzing).
class MemorySource : public ByteSource {
public:
    explicit MemorySource(std::string bytes) : bytes_(std::move(bytes)) {}
    qint64 read(char* buf, qint64 max) override;

private:
    std::string bytes_;
    size_t pos_ = 0;
};

class CsvReader {
public:
    // fileName is only used in messages.
    CsvReader(ByteSource& source, QString fileName);

    // Reads the header row; false when the file holds no row at all.
    bool readheader();
    const std::vector<std::string>& header() const { return header_; }
    // Index of the named column; -1 when the header has none.
    int column(std::string_view name) const;
    // Throws a FeedError naming the column when the header lacks it.
    int requirecolumn(std::string_view name) const;

    // Moves to the next data row; false at the end of the file. Blank lines are
    // passed over. A row with fewer fields than the header is an error.
    bool next();
    // A field of the current row; "" for a column index of -1. Unquoted fields are
    // trimmed of blanks; quoted ones are kept as written, doubled quotes undone.
    std::string_view field(int column) const
    {
        return column < 0 || column >= static_cast<int>(fields_.size()) ? std::string_view() : fields_[column];
    }
    // The file line the current row starts on (the header is line 1).
    qint64 line() const { return rowLine_; }
    const QString& fileName() const { return file_; }

    // An error about the current row, naming the column by its header name.
    [[noreturn]] void fail(int column, const QString& message) const;

    // Longest row accepted; a longer one is most likely an unclosed quote.
    static constexpr size_t kMaxRowBytes = 1 << 20;

private:
    // Parses one row at pos_ into fields_; false at the end of the input.
    bool readrow();
    bool fill();

    ByteSource& source_;
    QString file_;
    std::string buf_;
    size_t pos_ = 0;
    bool eof_ = false;
    bool started_ = false;
    qint64 nextLine_ = 1;
    qint64 rowLine_ = 0;
    std::vector<std::string> header_;
    struct Span { bool scratch; size_t off, len; };
    std::vector<Span> spans_;
    std::string scratch_;
    std::vector<std::string_view> fields_;
};

} // namespace quendle::gtfs
