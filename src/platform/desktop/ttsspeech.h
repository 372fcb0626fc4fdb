#pragma once
// Speech through QTextToSpeech's speech-dispatcher engine when it works, else through a
// command-line synthesiser (ProcessSpeech). The engine is started at the first sentence,
// not at construction, so start-up never waits for the speech daemon.

#include "platform/speech.h"
#include "platform/system/processspeech.h"

#include <memory>

class QTextToSpeech;

namespace quendle {

class TtsSpeech : public Speech {
public:
    TtsSpeech();
    ~TtsSpeech() override;

    void say(const QString& sentence) override;

    // True once the engine was tried and found unusable (or failed later).
    bool usingFallback() const { return tried_ && !engine_; }

private:
    void startengine();

    bool tried_ = false;
    std::unique_ptr<QTextToSpeech> engine_;
    ProcessSpeech fallback_;
};

} // namespace quendle
