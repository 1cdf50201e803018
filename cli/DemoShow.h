#pragma once

// The built-in demo: three test-signal channels with tones, a slideshow of generated cards,
// and a schedule that switches between them under a scrolling ticker and the logo. Needs no
// files; the cards are written into a folder the caller owns. Any thread.

#include "engine/EngineTypes.h"

#include <QMap>
#include <QString>

namespace selvane {

struct DemoShow
{
    QMap<int, QString> channels; // channel index -> lavfi address
    ProgramArrangement arrangement;
};

// Writes the demo's pictures into `folder` and returns the show; false when they cannot be
// written.
bool buildDemoShow(const QString &folder, DemoShow *show, QString *error);

} // namespace selvane
