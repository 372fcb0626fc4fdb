#pragma once
// Where a feed's files come from: its zip file (read through libzip) or the folder
// it was unpacked into. Files are streamed, never read whole.

#include "gtfs/csv.h"

#include <QString>

#include <map>
#include <memory>
#include <string>

namespace quendle::gtfs {

class FeedSource {
public:
    virtual ~FeedSource() = default;
    // Opens a zip file or a folder; throws FeedError when it is neither or unreadable.
    static std::unique_ptr<FeedSource> open(const QString& path);
    // The file's bytes, or nullptr when the feed has no such file.
    virtual std::unique_ptr<ByteSource> file(const QString& name) = 0;
};

// A feed held in memory, file name to bytes (tests and fuzzing).
class MemoryFeed : public FeedSource {
public:
    std::map<QString, std::string> files;
    std::unique_ptr<ByteSource> file(const QString& name) override;
};

} // namespace quendle::gtfs
