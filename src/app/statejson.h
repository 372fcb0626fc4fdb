#pragma once
// The application state as one JSON object, for `quendle-cli dump` and for tools
// that read it. Keys are stable: integers are numbers, instants ISO 8601 local time.

#include <QByteArray>
#include <QJsonObject>

namespace quendle {

class AppModel;

QJsonObject statejson(const AppModel& app);

// The object as indented text with "now" as its first member (a JSON object itself keeps
// its keys sorted), so a reader sees at once which moment the rest describes.
QByteArray statejsontext(const QJsonObject& state);

} // namespace quendle
