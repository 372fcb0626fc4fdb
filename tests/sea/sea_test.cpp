#include "platform/system/memorydefaults.h"
#include "sea/sea.h"

#include <gtest/gtest.h>

using namespace quendle;

TEST(Sea, WaveIconsAndTheTemperatureShownOnTheStatusItem)
{
    MemoryDefaults defaults;
    Sea sea(&defaults);
    QStringList shown;
    sea.refreshstat = [&](const QString& title, int unused, int icon) {
        shown << title + "/" + QString::number(unused) + "/" + QString::number(icon);
    };

    EXPECT_EQ(sea.waveasicon(), 13);   // nothing stored
    EXPECT_EQ(sea.waveasstr(), "");
    EXPECT_EQ(sea.displayseatemp(), "?");
    EXPECT_TRUE(shown.isEmpty());

    const std::pair<const char*, int> waves[] = {{"1#7|0|0|9|3|2014", 13}, {"2#7|0|0|9|3|2014", 15},
                                                 {"3#7|0|0|9|3|2014", 15}, {"4#7|0|0|9|3|2014", 15},
                                                 {"5#7|0|0|9|3|2014", 16}, {"6#7|0|0|9|3|2014", 16},
                                                 {"tall", 13},  // no instant: read through the date fallback
                                                 {"", 13}};
    for (const auto& [text, icon] : waves) {
        defaults.setString("waveheight", text);
        EXPECT_EQ(sea.waveasicon(), icon) << text;
    }

    // Readings are never out of date against the fixed five o'clock.
    defaults.setString("waveheight", "3#7|0|0|9|3|1901");
    defaults.setString("preferenceName", QString::fromUtf8("21°#7|0|0|9|3|2014"));
    EXPECT_EQ(sea.waveasstr(), "3");
    EXPECT_EQ(sea.displayseatemp(), QString::fromUtf8("21°"));
    EXPECT_EQ(shown, QStringList{QString::fromUtf8("3ft 21°/15/15")});
}
