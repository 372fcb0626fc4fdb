#include "platform/system/processspeech.h"

#include <QDebug>
#include <QProcess>
#include <QStandardPaths>

namespace quendle {

QStringList ProcessSpeech::defaultPrograms()
{
    return {QStringLiteral("spd-say"), QStringLiteral("espeak-ng"), QStringLiteral("espeak")};
}

ProcessSpeech::ProcessSpeech() : programs_(defaultPrograms()) {}

ProcessSpeech::ProcessSpeech(QStringList programs, QStringList searchDirs)
    : programs_(std::move(programs)), searchDirs_(std::move(searchDirs))
{
}

QString ProcessSpeech::program() const
{
    if (!looked_) {
        looked_ = true;
        for (const QString& p : programs_) {
            found_ = QStandardPaths::findExecutable(p, searchDirs_);
            if (!found_.isEmpty())
                break;
        }
    }
    return found_;
}

void ProcessSpeech::say(const QString& sentence)
{
    if (sentence.trimmed().isEmpty())
        return;
    const QString prog = program();
    if (prog.isEmpty()) {
        if (!warned_)
            qWarning().noquote() << QStringLiteral("quendle: nothing to speak with (looked for %1)")
                                        .arg(programs_.join(QStringLiteral(", ")));
        warned_ = true;
        return;
    }
    // A leading "-" would read as an option; a space in front is not heard.
    QString arg = sentence;
    if (arg.startsWith(QLatin1Char('-')))
        arg.prepend(QLatin1Char(' '));
    QProcess p;
    p.setProgram(prog);
    p.setArguments({arg});
    p.setStandardInputFile(QProcess::nullDevice());
    p.setStandardOutputFile(QProcess::nullDevice());
    p.setStandardErrorFile(QProcess::nullDevice());
    if (!p.startDetached())
        qWarning().noquote() << QStringLiteral("quendle: could not start %1 to speak").arg(prog);
}

} // namespace quendle
