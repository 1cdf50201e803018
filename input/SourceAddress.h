#pragma once

// A source address: what a channel or an overlay plays, parsed once where it enters the engine
// and handed down as this value to the decoder, the demuxer options and the capture code. A
// value type, immutable once built; any thread.
//
// Kinds, tested in this order: window capture ("wgc://capture?hwnd=…"), display capture
// ("desktop://capture?monitor=N[&wgc=1][&cursor=0]"), capture device
// ("dshow://capture?video=…&audio=…" with a usable video item), test signal ("lavfi://GRAPH",
// paced like a file, never live), network stream (anything else with "://"), local file.

#include <QByteArray>
#include <QString>

struct AVDictionary;
struct AVFormatContext;

namespace selvane {

enum class SourceKind
{
    WindowCapture,
    DisplayCapture,
    CaptureDevice,
    TestSignal,
    NetworkStream,
    LocalFile,
};

class SourceAddress
{
public:
    SourceAddress() = default; // no source
    explicit SourceAddress(const QString &text);

    const QString &text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }
    SourceKind kind() const { return m_kind; }
    bool isNetwork() const { return m_kind == SourceKind::NetworkStream; }
    bool isScreenCapture() const
    {
        return m_kind == SourceKind::WindowCapture || m_kind == SourceKind::DisplayCapture;
    }
    const QString &scheme() const { return m_scheme; } // lower case; empty for a path
    const QString &host() const { return m_host; }

    // Device names of a "dshow://" address (either may be empty).
    const QString &camera() const { return m_camera; }
    const QString &microphone() const { return m_microphone; }
    // Display and window capture.
    int monitor() const { return m_monitor; }
    bool systemCapture() const { return m_systemCapture; } // wgc=1: the system's own capture
    bool drawsCursor() const { return m_drawCursor; }
    quint64 window() const { return m_window; } // 0: none or unreadable
    // The filter graph of a test signal, percent-decoded.
    const QString &testGraph() const { return m_testGraph; }
    // A local file's path (a "file:" URL resolved).
    QString localPath() const;

    // Live by its scheme (a pushed or device source); an HTTP(S) stream without a duration is
    // live as well, which only the opened demuxer can tell.
    bool isLive(const AVFormatContext *openedFormat) const;
    // A stream that must be read as it comes (RTMP, RTSP, SRT, UDP, RTP).
    bool isRealTimeStream() const;
    bool usesHttpProxy() const;
    bool isTls() const; // rtmps, rtsps

    bool operator==(const SourceAddress &other) const { return m_text == other.m_text; }

private:
    QString m_text;
    SourceKind m_kind = SourceKind::LocalFile;
    QString m_scheme;
    QString m_host;
    QString m_camera;
    QString m_microphone;
    QString m_testGraph;
    int m_monitor = 0;
    quint64 m_window = 0;
    bool m_systemCapture = false;
    bool m_drawCursor = true;
};

// A live stream fetched segment by segment (HLS, DASH): it can be read as slowly as needed.
bool isSegmentedStream(const AVFormatContext *openedFormat);
QString escapeDshowDeviceName(const QString &name);
QByteArray buildDshowDeviceSpec(const QString &video, const QString &audio);
// The demuxer's open options for `address` (timeouts, proxies, live RTMP, RTSP over TCP).
void buildInputOptions(const SourceAddress &address, AVDictionary **dictionary, bool skipProxies);

} // namespace selvane
