#include "platform/desktop/ttsspeech.h"

#include <QCoreApplication>
#include <QDebug>
#include <QTextToSpeech>

namespace quendle {

namespace {
const QString kEngine = QStringLiteral("speechd");
}

TtsSpeech::TtsSpeech() = default;

TtsSpeech::~TtsSpeech() = default;

void TtsSpeech::startengine()
{
    tried_ = true;
    if (!QCoreApplication::instance() || !QTextToSpeech::availableEngines().contains(kEngine))
        return;
    engine_ = std::make_unique<QTextToSpeech>(kEngine);
    if (engine_->state() == QTextToSpeech::Error) {
        qWarning().noquote() << QStringLiteral("quendle: the speech engine is not usable (%1); "
                                               "speaking through a command instead")
                                    .arg(engine_->errorString());
        engine_.reset();
        return;
    }
    // A later failure (the daemon went away) hands speaking to the command for good.
    QObject::connect(engine_.get(), &QTextToSpeech::errorOccurred, engine_.get(),
                     [this](QTextToSpeech::ErrorReason, const QString& why) {
                         qWarning().noquote() << QStringLiteral("quendle: the speech engine failed (%1); "
                                                                "speaking through a command from now on")
                                                     .arg(why);
                         engine_.release()->deleteLater();
                     });
}

void TtsSpeech::say(const QString& sentence)
{
    if (sentence.trimmed().isEmpty())
        return;
    if (!tried_)
        startengine();
    if (engine_ && engine_->state() != QTextToSpeech::Error) {
        engine_->say(sentence);
        if (engine_)
            return;
        // The engine failed on this very sentence: it is said the other way.
    }
    fallback_.say(sentence);
}

} // namespace quendle
