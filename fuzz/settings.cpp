// The settings file (quendle.conf) as the defaults store reads it: whatever it holds, the
// keys read without harm, a change is saved and reads back, and a file that could not be
// read in full is first kept beside it, byte for byte.

#include "fuzzsupport.h"

#include "platform/system/qsettingsdefaults.h"
#include "platform/system/settingstext.h"

#include <QDir>
#include <QFile>

using namespace quendle;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::init();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A new path each time, so no file is left from an earlier input.
    static int run = 0;
    const QString dir = fuzz::home() + "/settings/" + QString::number(run++);
    QDir().mkpath(dir);
    const QString path = dir + "/quendle.conf";
    const QByteArray original = fuzz::bytes(data, size);
    {
        // Whatever was read is written so that it reads back the same, undamaged.
        const SettingsText read = readsettingstext(original);
        const SettingsText again = readsettingstext(writesettingstext(read.values));
        fuzz::require(!again.damaged && again.values == read.values, "the text reads back as written");
    }
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(original) != original.size())
        return 0;
    f.close();
    {
        QSettingsDefaults d(path);
        for (const char* key : {"journstrpref", "bookmarkspref", "myfavsspref", "runinitialsetup", "myskippref",
                                "waveheight", "preferenceName", "operatorurl"})
            d.stringForKey(QString::fromLatin1(key));
        d.setString(QStringLiteral("runinitialsetup"), QStringLiteral("1"));
        d.synchronize();
        if (!d.brokenCopy().isEmpty()) {
            QFile kept(d.brokenCopy());
            fuzz::require(kept.open(QIODevice::ReadOnly) && kept.readAll() == original,
                          "a damaged file is kept as it was");
        }
        fuzz::require(!d.synchronizeFailed(), "the settings are saved");
    }
    QFile::rename(path, dir + "/again.conf");
    fuzz::require(QSettingsDefaults(dir + "/again.conf").stringForKey(QStringLiteral("runinitialsetup")) == "1",
                  "a saved setting reads back");
    QDir(dir).removeRecursively();
    return 0;
}
