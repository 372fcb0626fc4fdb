#include "platform/system/nullservices.h"

namespace quendle {

namespace {

// Alert texts may come from downloaded pages: control characters (terminal escapes
// among them) are shown as spaces.
QString printable(const QString& s)
{
    QString out = s;
    for (QChar& c : out) {
        if (c.category() == QChar::Other_Control && c != QLatin1Char('\n'))
            c = QLatin1Char(' ');
    }
    return out;
}

} // namespace

int ConsoleAlerts::alert(const QString& message, const QString& info, const QStringList& buttons)
{
    QString text = QStringLiteral("quendle: ") + printable(message) + QLatin1Char('\n');
    if (!info.isEmpty())
        text += QStringLiteral("  ") + printable(info) + QLatin1Char('\n');
    if (!buttons.isEmpty()) {
        QStringList shown;
        for (const QString& b : buttons)
            shown << QLatin1Char('[') + printable(b) + QLatin1Char(']');
        text += QStringLiteral("  ") + shown.join(QLatin1Char(' ')) + QStringLiteral(" -> ")
            + printable(buttons.first()) + QLatin1Char('\n');
    }
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), out_);
    std::fflush(out_);
    return 0;
}

} // namespace quendle
