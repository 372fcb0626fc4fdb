#include "gui/desktopservices.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace quendle {

int MessageBoxAlerts::alert(const QString& message, const QString& info, const QStringList& buttons)
{
    QMessageBox box;
    box.setText(message);
    box.setInformativeText(info);
    QList<QAbstractButton*> made;
    for (int i = 0; i < buttons.size() && i < 4; ++i)
        made << box.addButton(buttons[i], i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    if (made.isEmpty())
        made << box.addButton(QMessageBox::Ok);
    box.exec();
    const int chosen = static_cast<int>(made.indexOf(box.clickedButton()));
    return chosen < 0 ? 0 : chosen;
}

bool DesktopBrowser::openUrl(const QString& url)
{
    const QUrl u(url);
    // Only web addresses: a downloaded text must never open a local program.
    if (u.scheme() != QLatin1String("https") && u.scheme() != QLatin1String("http"))
        return false;
    return QDesktopServices::openUrl(u);
}

void DesktopClipboard::setText(const QString& text)
{
    if (QClipboard* c = QGuiApplication::clipboard())
        c->setText(text);
}

} // namespace quendle
