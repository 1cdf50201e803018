#pragma once

// Display and window capture on Windows: monitors by DXGI output duplication, windows (and,
// with the wgc flag, monitors) through the companion library "WgcCapture.dll", loaded at run
// time; and the lists of outputs and top-level windows for the source dialog. Plain C++ (no Qt,
// no FFmpeg): the decoder hands each BGRA picture on as it does a decoded frame.
//
// The loops run on the decoder's worker thread until `stop` says so; the library bindings are
// process-wide, loaded once and kept. Everything here exists only in Windows builds.

#ifdef _WIN32

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace selvane::win {

struct Output
{
    int index = 0;
    std::wstring name; // the output's device name ("\\.\DISPLAY1")
    int x = 0, y = 0, width = 0, height = 0;
};

struct TopLevelWindow
{
    std::uint64_t handle = 0;
    std::wstring title;
};

// Outputs of all adapters, in adapter order then output order.
std::vector<Output> listOutputs();
// Visible, not minimised, not cloaked, unowned windows with a title (at most 384 characters).
std::vector<TopLevelWindow> listTopLevelWindows();
// "%1  [0x%2]": the title, two spaces and the handle in hexadecimal.
std::wstring windowLabel(const TopLevelWindow &window);

// What a capture loop is given: when to end and pause, where its pictures and failures go.
struct CaptureHooks
{
    std::function<bool()> stop;
    std::function<bool()> paused;
    std::function<void()> flushIfAsked;
    // Tightly packed BGRA, width * 4 bytes a row; time in microseconds.
    std::function<void(const std::uint8_t *bgra, int width, int height, std::int64_t timeUs)>
        deliver;
    // A set-up failure (the run ends) or a reported per-frame problem (the run goes on).
    std::function<void(const std::string &message)> report;
};

// Loads "WgcCapture.dll" once (from the application directory, the one above it, then the
// system's search); false with the message when it cannot be used.
bool loadWgcLibrary(const std::wstring &applicationDirectory, std::string *message);

void captureWindowLoop(std::uint64_t handle, const CaptureHooks &hooks);
void captureDesktopLoop(int monitor, bool preferWgc, const CaptureHooks &hooks);

} // namespace selvane::win

#endif
