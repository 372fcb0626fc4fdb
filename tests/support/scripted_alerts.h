#pragma once
// An Alerts double: answers from a queue (the first button once the queue is empty) and
// keeps every alert it was shown.

#include "platform/alerts.h"

#include <QList>
#include <QStringList>

#include <algorithm>
#include <deque>
#include <variant>

namespace quendle::testsupport {

class ScriptedAlerts : public Alerts {
public:
    struct Shown {
        QString message;
        QString info;
        QStringList buttons;
    };

    // The next answer, by index or by the button's title (the first button when no
    // button has that title).
    void answer(int index) { answers_.emplace_back(index); }
    void answer(const QString& buttonTitle) { answers_.emplace_back(buttonTitle); }

    int alert(const QString& message, const QString& info, const QStringList& buttons) override
    {
        shown_.append({message, info, buttons});
        if (answers_.empty())
            return 0;
        const auto next = answers_.front();
        answers_.pop_front();
        if (const int* index = std::get_if<int>(&next))
            return *index;
        return std::max<int>(0, static_cast<int>(buttons.indexOf(std::get<QString>(next))));
    }

    const QList<Shown>& shown() const { return shown_; }
    int count() const { return static_cast<int>(shown_.size()); }
    bool answersLeft() const { return !answers_.empty(); }

private:
    std::deque<std::variant<int, QString>> answers_;
    QList<Shown> shown_;
};

} // namespace quendle::testsupport
