#pragma once
// View flags that many layers read: kept low in the stack so that the journey
// rules can consult them without depending on the display.

namespace quendle {

struct ViewState {
    int zoomed = 1;          // 1 zoomed-in (one row per leg), 0 zoomed-out
    int inalarmscreen = 0;   // the alarm panel is shown
    int imfocusd = 0;        // the application is active
    int vimselectin = 0;     // the selected leg
    int showinmap = 1;       // the map is shown (beside the zoomed-out strip)
    int mytwview = 0;        // the trackwork panel is shown instead of the tiles
    int textscroll = 0;
};

} // namespace quendle
