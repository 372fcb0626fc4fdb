#pragma once
// Speech through a command-line synthesiser: the first of spd-say, espeak-ng and espeak
// found on PATH. The program is started directly (no shell) with the sentence as its one
// argument, and detached, so say() never waits for the speaking to end.

#include "platform/speech.h"

#include <QStringList>

namespace quendle {

class ProcessSpeech : public Speech {
public:
    ProcessSpeech();
    // Candidates in order of preference, looked up in searchDirs (PATH when empty).
    ProcessSpeech(QStringList programs, QStringList searchDirs);

    void say(const QString& sentence) override;

    // The program that speaks, "" when none was found.
    QString program() const;
    bool available() const { return !program().isEmpty(); }

    static QStringList defaultPrograms();

private:
    QStringList programs_;
    QStringList searchDirs_;
    mutable bool looked_ = false;
    mutable QString found_;
    bool warned_ = false;
};

} // namespace quendle
