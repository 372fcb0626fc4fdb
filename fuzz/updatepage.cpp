// The publisher's update page, as a check reads it from the network: the "<!WA" lines, the
// version, and every table name it gives, which must be refused as a file name unless plain.

#include "fuzzsupport.h"

#include "publisher/publish.h"
#include "update/updatepage.h"

using namespace quendle;

namespace {

// Text the page's lists can carry: no list or bracket marks, nothing that ends a line.
bool ordinary(const QString& s)
{
    for (QChar c : s)
        if (c == ',' || c == '[' || c == ']' || c.unicode() < 0x20 || c.unicode() == 0x85 || c.unicode() == 0x2028
            || c.unicode() == 0x2029)
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString page = fuzz::text(data, size);
    const UpdatePage p = readupdatepage(page);
    fuzz::require(p.reachable == page.contains(QLatin1String("iphonevers")) || p.toolarge, "the mark decides");
    QStringList names, dates;
    for (const OnlineTable& t : p.tables) {
        if (!isplaintablename(t.name))
            continue;
        fuzz::require(!t.name.contains('/') && !t.name.contains('\\') && !t.name.startsWith('.'),
                      "a plain name stays in its folder");
        if (ordinary(t.name) && ordinary(t.datestr) && !t.datestr.isEmpty()) {
            names << t.name;
            dates << t.datestr;
        }
    }
    // What a publisher writes for those tables reads back as the same tables.
    const UpdatePage again = readupdatepage(updatepagetext(names, dates, 1.5));
    fuzz::require(again.reachable, "a written page is reachable");
    if (!names.isEmpty()) {
        fuzz::require(again.tables.size() == static_cast<size_t>(names.size()), "the tables read back");
        for (qsizetype i = 0; i < names.size(); ++i)
            fuzz::require(again.tables[i].name == names[i] && again.tables[i].datestr == dates[i],
                          "names and dates read back");
    }
    return 0;
}
