#include "gtfs/feedsource.h"

#include <QFile>
#include <QFileInfo>

#include <zip.h>

namespace quendle::gtfs {

namespace {

class FileSource : public ByteSource {
public:
    explicit FileSource(const QString& path) : f_(path) {}
    bool open() { return f_.open(QIODevice::ReadOnly); }
    qint64 read(char* buf, qint64 max) override { return f_.read(buf, max); }
    QString errorString() const override { return f_.errorString(); }

private:
    QFile f_;
};

class FolderFeed : public FeedSource {
public:
    explicit FolderFeed(QString dir) : dir_(std::move(dir)) {}
    std::unique_ptr<ByteSource> file(const QString& name) override
    {
        const QString path = dir_ + QLatin1Char('/') + name;
        const QFileInfo fi(path);
        if (!fi.exists())
            return nullptr;
        // A pipe or device would block or never end; only plain files are feed files.
        if (!fi.isFile())
            throw FeedError(name, 0, QString(), QStringLiteral("is not a regular file"));
        auto src = std::make_unique<FileSource>(path);
        if (!src->open())
            throw FeedError(name, 0, QString(), QStringLiteral("cannot be opened (%1)").arg(src->errorString()));
        return src;
    }

private:
    QString dir_;
};

class ZipEntrySource : public ByteSource {
public:
    explicit ZipEntrySource(zip_file_t* f) : f_(f) {}
    ~ZipEntrySource() override { zip_fclose(f_); }
    qint64 read(char* buf, qint64 max) override
    {
        const zip_int64_t n = zip_fread(f_, buf, static_cast<zip_uint64_t>(max));
        if (n < 0)
            error_ = QString::fromUtf8(zip_error_strerror(zip_file_get_error(f_)));
        return n;
    }
    QString errorString() const override { return error_; }

private:
    zip_file_t* f_;
    QString error_;
};

class ZipFeed : public FeedSource {
public:
    explicit ZipFeed(zip_t* z) : z_(z) {}
    ~ZipFeed() override { zip_discard(z_); }
    std::unique_ptr<ByteSource> file(const QString& name) override
    {
        // Some publishers zip the folder rather than its files: take the entry with
        // that name nearest the top.
        const QByteArray wanted = name.toUtf8();
        zip_int64_t best = -1;
        qsizetype bestDepth = 0;
        const zip_int64_t count = zip_get_num_entries(z_, 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            const char* raw = zip_get_name(z_, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_GUESS);
            if (!raw)
                continue;
            const QByteArray entry(raw);
            if (entry != wanted && !entry.endsWith('/' + wanted))
                continue;
            if (entry.startsWith("__MACOSX/"))
                continue;
            const qsizetype depth = entry.count('/');
            if (best < 0 || depth < bestDepth) {
                best = i;
                bestDepth = depth;
            }
        }
        if (best < 0)
            return nullptr;
        zip_file_t* f = zip_fopen_index(z_, static_cast<zip_uint64_t>(best), 0);
        if (!f)
            throw FeedError(name, 0, QString(),
                            QStringLiteral("cannot be read from the zip file (%1)")
                                .arg(QString::fromUtf8(zip_strerror(z_))));
        return std::make_unique<ZipEntrySource>(f);
    }

private:
    zip_t* z_;
};

} // namespace

std::unique_ptr<ByteSource> MemoryFeed::file(const QString& name)
{
    const auto it = files.find(name);
    return it == files.end() ? nullptr : std::make_unique<MemorySource>(it->second);
}

std::unique_ptr<FeedSource> FeedSource::open(const QString& path)
{
    const QFileInfo fi(path);
    if (!fi.exists())
        throw FeedError(path, 0, QString(), QStringLiteral("no such file or folder"));
    if (fi.isDir())
        return std::make_unique<FolderFeed>(fi.absoluteFilePath());
    if (!fi.isFile())
        throw FeedError(path, 0, QString(), QStringLiteral("is neither a zip file nor a folder"));
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(fi.absoluteFilePath()).constData(), ZIP_RDONLY, &code);
    if (!z) {
        zip_error_t e;
        zip_error_init_with_code(&e, code);
        const QString why = QString::fromUtf8(zip_error_strerror(&e));
        zip_error_fini(&e);
        throw FeedError(path, 0, QString(), QStringLiteral("is not a readable zip file (%1)").arg(why));
    }
    return std::make_unique<ZipFeed>(z);
}

} // namespace quendle::gtfs
