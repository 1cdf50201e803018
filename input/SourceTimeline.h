#pragma once

// A source's own time made continuous: the timestamps of its pictures and of its sound, from
// one origin, turned into one time line that never jumps. A jump in a stream's timestamps (a
// transport stream's wrap, files joined together, a publisher that restarts) is taken out: the
// stream goes on where it was expected to be, and the other stream's matching jump moves it by
// the same amount. A loop of a file adds the length of the loop to
// both streams alike, so that every loop starts where picture and sound both start, and nothing
// adds up however long it runs. One run's thread only.

#include <QtGlobal>

namespace selvane {

class SourceTimeline
{
public:
    // A timestamp further than this from where the stream was expected is a jump.
    static constexpr qint64 kJumpUs = 1'000'000;
    static constexpr qint64 kNoTime = INT64_MIN;

    // The time of the first picture or sound of a new timeline, for example after a seek.
    void reset();
    // `rawUs` the frame's timestamp, `durationUs` how long it lasts; returns its continuous time.
    qint64 mapVideo(qint64 rawUs, qint64 durationUs) { return map(m_video, rawUs, durationUs); }
    qint64 mapAudio(qint64 rawUs, qint64 durationUs) { return map(m_audio, rawUs, durationUs); }
    // The file starts again from its beginning (`startUs`, its first timestamp): the next loop
    // follows the end of whichever stream ended last.
    void loopRestart(qint64 startUs);

    // How many jumps were taken out (the channel's stats show it).
    int jumps() const { return m_jumps; }

private:
    struct Stream
    {
        bool seen = false;
        qint64 offsetUs = 0;   // added to raw timestamps
        qint64 expectedUs = 0; // the next raw timestamp expected
        qint64 endUs = 0;      // continuous time where the stream's last frame ends
        int jump = 0;          // the last jump taken out of this stream
    };
    qint64 map(Stream &stream, qint64 rawUs, qint64 durationUs);

    Stream m_video;
    Stream m_audio;
    int m_jumps = 0;
    // The last jump and how much it moved the timestamps: the other stream, jumping by about as
    // much, is moved by exactly as much, so that picture and sound stay as they were.
    qint64 m_jumpDeltaUs = 0;
    bool m_haveLoopOffset = false;
    qint64 m_loopOffsetUs = 0;
};

} // namespace selvane
