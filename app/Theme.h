#pragma once

// The window's dark look: Fusion with a dark palette and a few style rules the palette cannot
// say. GUI thread, once, before the window is shown.

class QApplication;

namespace selvane {

void applyDarkTheme(QApplication &app);

} // namespace selvane
