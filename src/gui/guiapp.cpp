#include "gui/guiapp.h"

#include "app/appmodel.h"
#include "app/menus.h"
#include "input/input.h"
#include "gui/desktopservices.h"
#include "gui/stripwindow.h"
#include "platform/desktop/logindsession.h"
#include "platform/desktop/qthttp.h"
#include "platform/desktop/ttsspeech.h"
#include "platform/system/qsettingsdefaults.h"
#include "platform/system/qttimers.h"
#include "platform/system/systemclock.h"
#include "platform/system/xdgloginitems.h"

#include <QApplication>
#include <QDir>
#include <QGuiApplication>
#include <QStandardPaths>

namespace quendle {

void preferxwayland()
{
    const bool wayland = qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland")
        || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (wayland && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
}

struct GuiApp::Services {
    explicit Services(std::optional<Date> start) : clock(start) {}
    SystemClock clock;
    QtTimers timers{clock};
    QSettingsDefaults defaults;
    QtHttp http;
    TtsSpeech speech;
    MessageBoxAlerts alerts;
    DesktopBrowser browser;
    DesktopClipboard clipboard;
    XdgLoginItems loginItems;
    LogindSession session;
};

GuiApp::GuiApp(std::optional<Date> start) : s_(std::make_unique<Services>(start))
{
    platform_.clock = &s_->clock;
    platform_.timers = &s_->timers;
    platform_.defaults = &s_->defaults;
    platform_.http = &s_->http;
    // The strip repaints while a slow server is waited for; its timers wait too.
    s_->http.keepresponsive([this](bool on) { s_->timers.hold(on); });
    platform_.speech = &s_->speech;
    platform_.alerts = &s_->alerts;
    platform_.browser = &s_->browser;
    platform_.clipboard = &s_->clipboard;
    platform_.loginItems = &s_->loginItems;
    platform_.session = &s_->session;
    platform_.homeDir = QDir::homePath();
    platform_.appDataDir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/quendle";
    platform_.executablePath = QApplication::applicationFilePath();
    view_ = std::make_unique<MyNSView>();
    platform_.window = view_.get();
    model_ = std::make_unique<AppModel>(platform_, AppModel::Options{true});
    view_->setModel(model_.get());
    menus_ = std::make_unique<Menus>(*model_);
    input_ = std::make_unique<Input>(*model_, *menus_);
    view_->setInput(input_.get(), menus_.get());
}

GuiApp::~GuiApp() = default;

void GuiApp::start()
{
    model_->initWithFrame();
    model_->awakeFromNib();
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, view_.get(), [this](Qt::ApplicationState st) {
        s_->session.notifyActive(st == Qt::ApplicationActive);
    });
    view_->show();
}

} // namespace quendle
