#pragma once
// The application state as one JSON object, for `quendle-cli dump` and for tools
// that read it. Keys are stable: integers are numbers, instants ISO 8601 local time.

#include <QJsonObject>

namespace quendle {

class AppModel;

QJsonObject statejson(const AppModel& app);

} // namespace quendle
