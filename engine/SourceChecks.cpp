// What the operator types or picks as a source, checked before a channel takes it: the address
// itself, and the guard against reading the program's own output.

#include "engine/SourceChecks.h"

#include "input/ScreenCapture.h"
#include "input/SourceAddress.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavformat/avio.h>
}

namespace selvane {

namespace {

bool knownInputProtocol(const QString &scheme)
{
    void *opaque = nullptr;
    while (const char *name = avio_enum_protocols(&opaque, 0)) {
        if (scheme.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool graphParses(const QString &graph)
{
    AVFilterGraph *filterGraph = avfilter_graph_alloc();
    if (!filterGraph)
        return false;
    AVFilterInOut *inputs = nullptr;
    AVFilterInOut *outputs = nullptr;
    const int err =
        avfilter_graph_parse2(filterGraph, graph.toUtf8().constData(), &inputs, &outputs);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    avfilter_graph_free(&filterGraph);
    return err >= 0;
}

// A source or an output as one comparable text: a local file's clean absolute path, or the
// normalised URL.
QString normalised(const QString &text)
{
    const QUrl url =
        QUrl::fromUserInput(text.trimmed(), QDir::currentPath(), QUrl::AssumeLocalFile);
    if (url.isLocalFile())
        return QDir::cleanPath(QFileInfo(url.toLocalFile()).absoluteFilePath());
    return url.adjusted(QUrl::NormalizePathSegments | QUrl::StripTrailingSlash).toString();
}

bool isLocal(const QString &text)
{
    return QUrl::fromUserInput(text.trimmed(), QDir::currentPath(), QUrl::AssumeLocalFile)
        .isLocalFile();
}

} // namespace

Problem checkSourceAddress(const SourceAddress &source)
{
    if (source.isEmpty())
        return ProblemKind::AddressEmpty;
    const QString &address = source.text();
    switch (source.kind()) {
    case SourceKind::WindowCapture:
    case SourceKind::DisplayCapture:
    case SourceKind::CaptureDevice:
        return {};
    case SourceKind::TestSignal:
        if (graphParses(source.testGraph()))
            return {};
        return {ProblemKind::AddressBadTestSignal, address};
    case SourceKind::NetworkStream: {
        if (!knownInputProtocol(source.scheme()))
            return {ProblemKind::AddressUnknownScheme, address};
        if (source.host().isEmpty())
            return {ProblemKind::AddressMissingHost, address};
        return {};
    }
    case SourceKind::LocalFile: {
        const QFileInfo info(source.localPath());
        if (info.isFile() && info.isReadable())
            return {};
        return {ProblemKind::AddressFileMissing, address};
    }
    }
    return {};
}

Problem sourceIsOutput(const SourceAddress &source, const EncoderSettings &outputs)
{
    if (source.isEmpty() || source.scheme() == "dshow" || source.isScreenCapture())
        return {};
    const QString wanted = normalised(source.text());
    if (outputs.fileEnabled && !outputs.filePath.trimmed().isEmpty() &&
        normalised(outputs.filePath) == wanted)
        return {ProblemKind::SourceIsRecording, source.text(), isLocal(outputs.filePath) ? 1 : 0};
    for (const StreamTarget &target : outputs.streamTargets)
        if (normalised(target.url) == wanted)
            return {ProblemKind::SourceIsTarget, source.text(), isLocal(target.url) ? 1 : 0};
    return {};
}

} // namespace selvane
