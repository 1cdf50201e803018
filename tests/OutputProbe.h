#pragma once

// Reading recordings back with ffprobe: stream codecs, counted frames, durations, key frames.

#include <QProcess>
#include <QStringList>

namespace testsupport {

struct ProbedStream
{
    QString codec;
    qint64 frames = -1; // counted by decoding
    double duration = 0;
};

struct ProbedFile
{
    bool ok = false;
    QList<ProbedStream> streams;
    double duration = 0;
    QByteArray errors;
    const ProbedStream *stream(const QString &codec) const
    {
        for (const ProbedStream &s : streams)
            if (s.codec == codec)
                return &s;
        return nullptr;
    }
};

inline ProbedFile probeFile(const QString &path, bool countFrames = true)
{
    QProcess process;
    QStringList args{"-v", "error"};
    if (countFrames)
        args << "-count_frames";
    args << "-show_entries" << "stream=codec_name,nb_read_frames,duration:format=duration"
         << "-of" << "default=nw=1" << path;
    process.start("ffprobe", args);
    ProbedFile result;
    if (!process.waitForFinished(60000))
        return result;
    result.ok = process.exitCode() == 0;
    result.errors = process.readAllStandardError();
    ProbedStream *current = nullptr;
    bool inFormat = false;
    for (const QByteArray &raw : process.readAllStandardOutput().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        const QString key = line.section('=', 0, 0);
        const QString value = line.section('=', 1);
        if (key == "codec_name") {
            result.streams.append({value, -1, 0});
            current = &result.streams.last();
            inFormat = false;
        } else if (key == "nb_read_frames" && current) {
            current->frames = value.toLongLong();
        } else if (key == "duration") {
            if (current && !inFormat && current->duration == 0 && value != "N/A")
                current->duration = value.toDouble();
            else
                result.duration = value.toDouble();
        }
    }
    return result;
}

// True when the first video frame of the file is a key frame.
inline bool startsWithKeyFrame(const QString &path)
{
    QProcess process;
    process.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-read_intervals", "%+#1",
                              "-show_entries", "frame=key_frame", "-of", "csv=p=0", path});
    process.waitForFinished(20000);
    return process.readAllStandardOutput().trimmed().startsWith("1");
}

} // namespace testsupport
