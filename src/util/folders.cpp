#include "util/folders.h"

#include "util/files.h"

#include <QDir>

namespace quendle {

Folders::Folders(QString homeDir) : home_(std::move(homeDir))
{
    if (home_.isEmpty())
        home_ = QDir::homePath();
    while (home_.size() > 1 && home_.endsWith('/'))
        home_.chop(1);
}

QString Folders::getuserhomedir() const { return home_; }

QString Folders::getprefsfold() const
{
    // The intermediate folders are made one at a time: lummakedir makes one level only.
    const QString lib = home_ + "/Library";
    const QString prefs = lib + "/Preferences";
    const QString mine = prefs + "/quendlefddffdrterXAXAXA/";
    if (!lumexist(mine)) {
        lummakedir(lib);
        lummakedir(prefs);
        lummakedir(mine);
    }
    return mine;
}

QString Folders::gettablesfold() const
{
    const QString f = getprefsfold() + "tablesverified";
    if (!lumexist(f))
        lummakedir(f);
    return f;
}

QString Folders::gettemptablesfold() const
{
    const QString f = getprefsfold() + "tablestemp/";
    if (!lumexist(f))
        lummakedir(f);
    return f;
}

QString Folders::getcrashfile() const { return getprefsfold() + "succquit.txt"; }

QString Folders::getresourcesfold() const { return home_ + "/quendle-publisher/resources/"; }

QString Folders::getthisresource(const QString& name) const
{
    return getresourcesfold() + name + ".tif";
}

QString Folders::getthisresourcegif(const QString& name) const
{
    return getresourcesfold() + "mapg/" + name + ".gif";
}

QString Folders::getthislocalresource(const QString& name) { return name + ".tif"; }

QString Folders::publishermarker() const { return home_ + "/quendle-publisher/amizorb"; }

QString Folders::publisherbuildfold() const { return home_ + "/quendle-publisher/build/quendle"; }

} // namespace quendle
