#pragma once

// Source addresses: the one string that names what a channel or an overlay plays. Free
// functions, callable from any thread.
//
// Kinds, tested in this order: window capture ("wgc://capture?hwnd=…"), display capture
// ("desktop://capture?monitor=N[&wgc=1]"), capture device ("dshow://capture?video=…&audio=…"
// with a usable video item), test signal ("lavfi://GRAPH", paced like a file, never live),
// network stream (anything else with "://"), local file.

#include <QByteArray>
#include <QString>
#include <optional>

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

SourceKind classifySource(const QString &address);

bool isLiveSource(const QString &address, const AVFormatContext *openedFormat);
// A live stream fetched segment by segment (HLS, DASH): it can be read as slowly as needed.
bool isSegmentedStream(const AVFormatContext *openedFormat);
bool usesHttpProxy(const QString &address);
bool isTcpCarriedUrl(const QString &address);
bool parseDshowAddress(const QString &address, QString *video, QString *audio);
QString escapeDshowDeviceName(const QString &name);
QByteArray buildDshowDeviceSpec(const QString &video, const QString &audio);
void buildInputOptions(const QString &address, AVDictionary **dictionary, bool skipProxies);

// Query values of the capture addresses.
int parseMonitorIndex(const QString &value);
bool parseWgcFlag(const QString &value);
std::optional<quint64> parseWindowHandle(const QString &value);

// The filter graph of a "lavfi://" address, percent-decoded.
QString testSignalGraph(const QString &address);

} // namespace selvane
