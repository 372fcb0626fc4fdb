// The station-connections file as start-up reads it, over the built-in table's stations:
// each line "NAME|H|V-...-A,B,C" adds connections to a known station.

#include "fuzzsupport.h"

#include "app/appmodel.h"
#include "platform/system/manualtimers.h"

using namespace quendle;

namespace {

struct Rig {
    ManualClock clock{datefromcivil({2026, 11, 24, 8, 0, 0})};
    ManualTimers timers{clock};
    Platform platform;
    std::unique_ptr<AppModel> app;
    Rig()
    {
        platform.clock = &clock;
        platform.timers = &timers;
        platform.homeDir = fuzz::home();
        platform.notice = [](const QString&) {};
        app = std::make_unique<AppModel>(platform, AppModel::Options{false});
        app->setupstuff();
    }
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    static Rig rig;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Rig rig;
    Journey& j = rig.app->journey();
    j.setupstnconnectionsfromtext(fuzz::text(data, size));
    fuzz::require(j.stnsconnections.size() == rig.app->timetable().stnsmute.size(),
                  "one list of connections per station");
    return 0;
}
