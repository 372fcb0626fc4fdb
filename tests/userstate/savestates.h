#pragma once
// Two complete user states, each large enough that writing it takes a while, for the test
// that kills a process in the middle of saving.

#include "userstate/userstate.h"

namespace quendle::testsupport {

inline void setsavestate(UserState& u, Journey& j, int which)
{
    u.ivereadprefs = 1;
    u.myfavs.clear();
    u.mybookmarks.clear();
    if (which == 0) {
        j.myjournstr = {"Central", "Strathfield"};
        u.mybookmarks = {{"Hornsby", {"Hornsby", "Epping"}, 1}};
    } else {
        j.myjournstr = {"Hornsby", "Epping", "Central"};
        u.mybookmarks = {{"Central", {"Central", "Strathfield"}, 1}, {"Redfern", {"Redfern", "Central"}, 1}};
    }
    for (int i = 0; i < 3000; ++i)
        u.myfavs.push_back({QStringLiteral("Station %1 %2").arg(which).arg(i), i + which});
}

} // namespace quendle::testsupport
