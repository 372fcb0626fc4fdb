// The operator's trackwork page as the reduction takes it: the validity test, the title
// found per block against the plain search for the same expression, the compact text, and
// that text read back into records on the built-in network.

#include "builtinnetwork.h"

#include "disruptions/trackworkpage.h"
#include "util/text.h"

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    fuzz::builtinnetwork();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Timetable& tt = fuzz::builtinnetwork();
    const QString page = fuzz::text(data, size);
    thisvalidtw(page);
    // The title search tries each line once; on small blocks it must agree with the plain
    // search (which is quadratic on hostile lines, so larger blocks are left to the first).
    for (const QString& block : page.split(QStringLiteral("trkworkItemHeading"))) {
        if (block.size() <= 2048)
            fuzz::require(firsttitlematch(block)
                              == lumregextremestr(block, "(?<=title=\\\")(T[0-9]|).{1,}[A-Z][a-z]{1,}\\sLine"),
                          "the title is the expression's first match");
    }
    const QString compact = comptwtext(page);
    fuzz::require(compact.isEmpty() || compact.startsWith('\r'), "the compact text begins with a return");
    const ParsedTrakw parsed = parsetrakwcompact(compact, tt, datefromcivil({2014, 3, 9, 17, 0, 0}));
    fuzz::require(parsed.debugshoworigtrakwork.size() == compact.count('\r') + 1, "every compact line is kept for debug");
    return 0;
}
