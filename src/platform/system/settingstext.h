#pragma once
// The settings file's text: INI sections of key=value lines, in the layout Qt's INI
// settings files use, so files written by earlier versions read the same and files written
// now read the same in them. Values are text only. Qt's serialized values ("@Variant(...)",
// "@Rect(...)" and the like) are never decoded: a hostile length in one would ask for any
// amount of memory. Such a value reads as missing and marks the text damaged.
//
// Keys carry their section: "key" for [General], "section/key" otherwise. A value written
// as a comma-separated list reads as its items joined by ",".

#include <QByteArray>
#include <QMap>
#include <QString>

namespace quendle {

struct SettingsText {
    QMap<QString, QString> values;
    // Something in the text could not be read: a line that is neither a section, a
    // key=value nor a comment, an unclosed section or quote, bytes that are not UTF-8, a
    // serialized value. What could be read is in values.
    bool damaged = false;
};

SettingsText readsettingstext(const QByteArray& bytes);
// Reads back through readsettingstext as the same values, undamaged.
QByteArray writesettingstext(const QMap<QString, QString>& values);

} // namespace quendle
