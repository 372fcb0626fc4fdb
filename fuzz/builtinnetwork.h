#pragma once
// The built-in network's lines and stations, loaded once per process into the fuzz home,
// for targets whose readers look names up in them.

#include "fuzzsupport.h"

#include "timetable/timetable.h"

#include <memory>

namespace quendle::fuzz {

inline const Timetable& builtinnetwork()
{
    static const Folders folders(home());
    static const std::unique_ptr<Timetable> tt = [] {
        auto t = std::make_unique<Timetable>(folders);
        t->setuptables();
        t->setuplinesmultitable();
        t->setupstnsmute();
        return t;
    }();
    return *tt;
}

} // namespace quendle::fuzz
