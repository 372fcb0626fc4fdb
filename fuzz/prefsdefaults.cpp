// The three keys of the defaults store as start-up reads them. The input holds the
// journey, bookmarks and favourites texts separated by 0x1e (a missing one is a missing
// key). Whatever they hold: every station of the journey is known, the next save has the
// file's shape, and what is saved reads back as the same state.

#include "userstaterig.h"

using namespace quendle;

namespace {

struct Saved {
    QStringList journey;
    QString favourites, bookmarks;
    bool operator==(const Saved&) const = default;
};

Saved saved(const UserState& u, const Journey& j) { return {j.myjournstr, u.favouritestext(), u.bookmarkstext()}; }

} // namespace

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
    const QStringList parts = fuzz::text(data, size).split(QChar(0x1e));
    const char* const keys[] = {"journstrpref", "bookmarkspref", "myfavsspref"};
    for (int i = 0; i < 3 && i < parts.size(); ++i)
        r.defaults.setString(QString::fromLatin1(keys[i]), parts[i]);
    r.u.readprefs();
    for (const QString& s : r.journey.myjournstr)
        fuzz::require(r.tt.stnnametonum(s) >= 0, "every station of the journey is known");
    fuzz::require(r.journey.myjournstr.size() <= 2 * r.journey.maxlegs, "the journey is bounded");
    fuzz::require(r.savesclean(), "the next save has the file's shape");

    // Saved and read again, the state is the same.
    const Saved first = saved(r.u, r.journey);
    r.defaults = MemoryDefaults();
    r.defaults.setString("journstrpref", r.u.journeytext());
    r.defaults.setString("bookmarkspref", first.bookmarks);
    r.defaults.setString("myfavsspref", first.favourites);
    r.u.readprefs();
    fuzz::require(saved(r.u, r.journey) == first, "what is saved reads back the same");
    return 0;
}
