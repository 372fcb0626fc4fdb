// Saves the user's state over and over, alternating between two states, until killed.
// Arguments: the home folder and the settings file. Prints "ready" after the first save.

#include "../savestates.h"

#include "platform/system/qsettingsdefaults.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    quendle::QSettingsDefaults defaults(QString::fromLocal8Bit(argv[2]));
    quendle::testsupport::SaveRig rig(QString::fromLocal8Bit(argv[1]), defaults);
    for (long i = 0;; ++i) {
        rig.setstate(static_cast<int>(i % 2));
        rig.u.writeprefs();
        if (i == 1) {
            std::puts("ready");
            std::fflush(stdout);
        }
    }
}
