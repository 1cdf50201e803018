#pragma once

// One RGBA 8:8:8:8 picture shared between decoder threads, the pipeline, the compositor and the
// encoder workers. A token is written by exactly one producer while it is private and is only
// read once it has been published as a FrameTokenPtr; pooled tokens go back to their pool when
// the last FrameTokenPtr is released.

#include <QByteArray>
#include <QMetaType>

#include <memory>

struct FrameToken
{
    qint64 pts = 0;          // presentation time set by the producer
    quint64 producerWord = 0; // owned by the producer, never touched by the pool
    qint32 width = 0;
    qint32 height = 0;
    bool flag = true;        // set when created and when the pipeline fills it from an image
    QByteArray pixels;       // rows of R, G, B, A bytes
    qint64 stride = 0;       // bytes per row in pixels
    quint64 tag = 0;         // owned by the producer, reset when returned to the pool
};

using FrameTokenPtr = std::shared_ptr<FrameToken>;

Q_DECLARE_METATYPE(FrameTokenPtr)
