#pragma once
// The desktop front end: the real services, the application model and the strip.

#include "platform/platform.h"

#include <memory>
#include <optional>

namespace quendle {

class AppModel;
class Input;
class Menus;
class MyNSView;

// On a Wayland session where the user chose no Qt platform, use XWayland so that the
// strip can place its own window. Call before the QApplication is made.
void preferxwayland();

class GuiApp {
public:
    // Runs from `start` on (given with QUENDLE_NOW), or on the system's time.
    explicit GuiApp(std::optional<Date> start = std::nullopt);
    ~GuiApp();
    void start();
    AppModel& model() { return *model_; }
    MyNSView& view() { return *view_; }
    Menus& menus() { return *menus_; }
    Input& input() { return *input_; }

private:
    struct Services;
    std::unique_ptr<Services> s_;
    Platform platform_;
    std::unique_ptr<MyNSView> view_;
    std::unique_ptr<AppModel> model_;
    std::unique_ptr<Menus> menus_;
    std::unique_ptr<Input> input_;
};

} // namespace quendle
