// The compact notice file (kept in the preferences folder, so anything may be in it) read
// into trackwork records on the built-in network.

#include "builtinnetwork.h"

#include "disruptions/trackworkpage.h"
#include "util/dates.h"

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
    const Date now = datefromcivil({2014, 3, 9, 17, 0, 0});
    const ParsedTrakw parsed = parsetrakwcompact(fuzz::text(data, size), tt, now);
    for (const TrakwRecord& r : parsed.trakw) {
        fuzz::require(testlumdateearlier(now, r.trakend), "finished notices are dropped");
        fuzz::require(r.linenum >= 0 && r.linenum < static_cast<int>(tt.linesmute.size()), "a known line");
        fuzz::require(r.gotstnsoutinfo == (r.stnsoutfix.empty() ? 0 : 1), "sections found means the flag");
        for (const StationRange& s : r.stnsoutfix) {
            fuzz::require(tt.thisstnonthisline(s.trakbegstr, r.linenum) >= 0
                              && tt.thisstnonthisline(s.trakendstr, r.linenum) >= 0,
                          "both ends of a section are on the line");
            for (const LinePositions& p : s.begendonlinenums)
                fuzz::require(p.onthislinenum >= 0 && p.onthislinenum < static_cast<int>(tt.linesmute.size()),
                              "positions name known lines");
        }
    }
    return 0;
}
