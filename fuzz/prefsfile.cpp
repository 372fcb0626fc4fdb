// The preferences file "quendlepref.txt" as its reader takes it: whatever the text, the
// journey stays within what a hand-made one holds, every station in it is known, and the
// next save writes a file of the right shape.

#include "userstaterig.h"

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    fuzz::rig();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::UserStateRig& r = fuzz::rig();
    r.reset();
    r.u.readprefstext(fuzz::text(data, size));
    const QStringList& j = r.journey.myjournstr;
    fuzz::require(j.size() <= r.journey.maxlegs, "the file gives at most seven stations");
    for (const QString& s : j)
        fuzz::require(r.tt.stnnametonum(s) >= 0, "every station of the journey is known");
    fuzz::require(r.u.myalarms.size() <= 1, "at most one alarm");
    fuzz::require(r.u.myfavstoshow.size() <= 11, "at most eleven favourites offered");
    fuzz::require(r.savesclean(), "the next save has the file's shape");
    return 0;
}
