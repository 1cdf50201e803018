#include "cli/CommandLine.h"

#include "cli/OverlaySpecs.h"
#include "cli/ProfileOptions.h"
#include "engine/Engine.h"
#include "engine/OutputMomentText.h"
#include "engine/OutputRules.h"
#include "media/TransitionWords.h"
#include "output/EncodeProfiles.h"
#include "schedule/ProgramArrangement.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QUrl>
#include <cstdio>

namespace selvane {

namespace {
// lupdate files these texts under the context "selvane" (the namespace of this helper).
QString tr(const char *text)
{
    return QCoreApplication::translate("selvane", text);
}
} // namespace

void configureCommandLine(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        tr("Selvane live video mixer. Without options the mixer window opens."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"headless", tr("Run the engine without a window (no instance lock).")});
    parser.addOption(
        {"schedule", tr("Play this program schedule (JSON) into the outputs."), "FILE"});
    parser.addOption({"check-schedule",
                      tr("Validate a program schedule and print it in the current format; "
                         "with --channel options, warn of clips whose channel has no source."),
                      "FILE"});
    parser.addOption({"transition",
                      tr("How the schedule's channel clips without a transition of their own "
                         "come on air: cut, mix, wipe or dip, with :MS for its length (default "
                         "1000), e.g. mix:500; or stinger:FILE, a clip with alpha played over "
                         "the switch, with @MS for where the switch happens (default: its "
                         "middle), e.g. stinger:logo.mov@400. Default: cut."),
                      "TYPE[:MS]"});
    parser.addOption({"backup",
                      tr("When channel N fails on air (reconnecting, or no new picture for "
                         "--failover-ms), show this instead: channel:M (another channel), or a "
                         "file or stream address. A channel without one shows the slate. "
                         "Repeatable; turns failover on."),
                      "N=ADDRESS"});
    parser.addOption({"slate",
                      tr("The picture or clip shown for a failed channel without a backup "
                         "(default: a card saying the programme will be back shortly); turns "
                         "failover on."),
                      "PATH"});
    parser.addOption({"slate-text", tr("Words over the slate."), "TEXT"});
    parser.addOption({"failover-ms",
                      tr("How long the channel on air may deliver no new picture before its "
                         "backup replaces it (default 2000); turns failover on."),
                      "MS"});
    parser.addOption({"return-ms",
                      tr("How long a failed channel must deliver steadily before it goes back "
                         "on air (default 3000)."),
                      "MS"});
    parser.addOption({"demo", tr("Run the built-in demo: test signals, a schedule, a ticker and "
                                 "an image overlay (no files needed).")});
    parser.addOption({"channel",
                      tr("Load a source into input channel N (1-4): a file path, a network URL, "
                         "a capture address or lavfi://GRAPH. Repeatable."),
                      "N=ADDRESS"});
    parser.addOption({"microphone",
                      tr("Give channel N (1-4) the sound of this microphone (a PulseAudio source "
                         "by name or description) instead of its own. Repeatable."),
                      "N=NAME"});
    parser.addOption({"base", tr("Channel (1-4) that forms the program picture. Default 1."), "N"});
    parser.addOption(
        {"duration", tr("Stop after this many seconds (default: until Ctrl+C)."), "SECONDS"});
    parser.addOption(
        {"start-outputs", tr("Window: start the recording and streams of the show at once (without "
                             "--headless they wait for the Start button).")});
    parser.addOption({"volume",
                      tr("Preview (speaker) volume of channel N, linear, e.g. 1=0.5. Repeatable."),
                      "N=V"});
    parser.addOption({"program-volume",
                      tr("Volume of the program channel in the program mix, linear (default 1)."),
                      "V"});
    parser.addOption({"gain",
                      tr("Program bus gain for recording and streaming, in percent "
                         "(default 100)."),
                      "PERCENT"});
    parser.addOption({"text", tr("Show a scrolling ticker with these words. Repeatable."), "TEXT"});
    parser.addOption(
        {"image", tr("Show a picture in the rectangle x,y,w,h of the 640x360 scene. Repeatable."),
         "PATH@x,y,w,h"});
    parser.addOption({"video",
                      tr("Play a video (looping) in the rectangle x,y,w,h of the 640x360 scene. "
                         "Repeatable."),
                      "PATH@x,y,w,h"});
    parser.addOption(
        {"record",
         tr("Record the program to this file (MP4, MKV, MOV, TS ...); NAME= picks a profile."),
         "[NAME=]PATH"});
    parser.addOption({"twin",
                      tr("Write a second copy of the recording from the same encoded pictures: "
                         "a file, or a folder (on another disk) for a file of the same name. "
                         "Each copy fails and resumes on its own."),
                      "PATH"});
    parser.addOption({"segment-minutes",
                      tr("Start a new recording file at a keyframe after this many minutes."),
                      "M"});
    parser.addOption(
        {"segment-gib",
         tr("Start a new recording file at a keyframe once a file reaches this many GiB."), "G"});
    parser.addOption({"keep-free",
                      tr("Ring recording (with segments): delete this take's oldest segments "
                         "while the recording's disk has less than this many MiB free."),
                      "MIB"});
    parser.addOption({"stream",
                      tr("Publish the program to this URL (rtmp://, rtmps://, srt://, udp:// ...); "
                         "#FORMAT picks the container (flv, mpegts). Repeatable."),
                      "[NAME=]URL[#FORMAT]"});
    addProfileOptions(parser);
    parser.addOption({"start-at",
                      tr("Start the outputs at this time rather than at once: a local date-time "
                         "(2026-11-26T21:00[:SS]), a time of day (21:00[:SS], its next coming), "
                         "or \"schedule\" (as the schedule starts)."),
                      "WHEN"});
    parser.addOption({"stop-at",
                      tr("Stop the outputs at this time: a date-time, a time of day, or "
                         "\"schedule\" (where the schedule ends)."),
                      "WHEN"});
    parser.addOption(
        {"size", tr("Output size, e.g. 1280x720 (default: same as the program)."), "WxH"});
    parser.addOption({"fps", tr("Output frame rate: 30 or 60 (default 30)."), "FPS"});
    parser.addOption({"bitrate", tr("Video bitrate in kbit/s (default: automatic)."), "KBPS"});
    parser.addOption(
        {"encoder", tr("Video encoder: auto, hardware or software (default auto)."), "MODE"});
    parser.addOption({"preset",
                      tr("Quality preset: performance, balanced or quality (default balanced)."),
                      "PRESET"});
    parser.addOption({"control-port",
                      tr("Serve the remote control API (HTTP and WebSocket) on this port."),
                      "PORT"});
    parser.addOption({"control-bind",
                      tr("Address the remote control listens on (default 127.0.0.1)."), "ADDRESS"});
}

int checkScheduleFile(const QCommandLineParser &parser)
{
    const QString path = parser.value("check-schedule");
    std::array<bool, 4> hasSource{};
    for (const QString &value : parser.values("channel")) {
        const int n = value.section('=', 0, 0).trimmed().toInt();
        if (n >= 1 && n <= 4 && !value.section('=', 1).trimmed().isEmpty())
            hasSource[std::size_t(n - 1)] = true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "selvane: %s: %s\n",
                     qPrintable(QCoreApplication::translate("ProgramArrangement",
                                                            "Unable to open the file.")),
                     qPrintable(path));
        return 1;
    }
    QString error;
    QStringList warnings;
    const ProgramArrangement arrangement = arrangement::fromJson(file.readAll(), &error, &warnings);
    if (!error.isEmpty()) {
        std::fprintf(stderr, "selvane: %s: %s\n", qPrintable(path), qPrintable(error));
        return 1;
    }
    const arrangement::Validation check = arrangement::validate(arrangement);
    if (!check.ok) {
        std::fprintf(stderr, "selvane: %s: %s: %s\n", qPrintable(path), qPrintable(check.title),
                     qPrintable(check.message));
        return 1;
    }
    warnings += arrangement::unsourcedChannelWarnings(arrangement, hasSource);
    for (const QString &warning : warnings)
        std::fprintf(stderr, "selvane: warning: %s\n", qPrintable(warning));
    const QByteArray json = arrangement::toJson(arrangement);
    std::fwrite(json.constData(), 1, std::size_t(json.size()), stdout);
    std::fprintf(stderr, "%s\n",
                 qPrintable(QCoreApplication::translate(
                                "ProgramArrangement",
                                "Schedule check passed: %1 base clip(s), %2 overlay clip(s).")
                                .arg(arrangement.sceneClips.size())
                                .arg(arrangement.overlayClips.size())));
    return 0;
}

LaunchFace launchFaceFor(const QStringList &arguments)
{
    QCommandLineParser parser;
    configureCommandLine(parser);
    // Qt's own GUI options (-platform, -style, ...) belong to the application object.
    QStringList ours{arguments.value(0)};
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &arg = arguments[i];
        static const QStringList qtOptionsWithValue{
            "-platform",     "-style",       "-stylesheet", "-qwindowgeometry",
            "-qwindowtitle", "-qwindowicon", "-display",    "-session"};
        if (qtOptionsWithValue.contains(arg)) {
            ++i;
            continue;
        }
        if (arg == "-reverse" || arg == "-nograb" || arg == "-dograb" || arg == "-sync")
            continue;
        ours << arg;
    }
    if (!parser.parse(ours))
        return LaunchFace::ConsoleOnly;
    if (parser.isSet("help") || parser.isSet("help-all") || parser.isSet("version"))
        return LaunchFace::ConsoleOnly;
    if (!parser.positionalArguments().isEmpty())
        return LaunchFace::ConsoleOnly;
    if (parser.isSet("check-schedule"))
        return LaunchFace::CheckSchedule;
    if (parser.isSet("headless") || parser.isSet("demo"))
        return LaunchFace::Headless;
    return LaunchFace::Gui;
}

namespace {

bool readOutputOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    EncoderSettings &out = options->output;
    if (parser.isSet("record")) {
        out.filePath = parser.value("record").trimmed();
        out.fileEnabled = !out.filePath.isEmpty();
        if (!out.fileEnabled) {
            *error = tr("--record expects a file path");
            return false;
        }
    }
    if (parser.isSet("twin")) {
        const QString twin = parser.value("twin").trimmed();
        if (!out.fileEnabled || twin.isEmpty()) {
            *error = tr("--twin expects a file or a folder, beside --record");
            return false;
        }
        // A folder: the same file name there.
        out.twinFilePath = QFileInfo(twin).isDir()
                               ? QDir(twin).filePath(QFileInfo(out.filePath).fileName())
                               : twin;
    }
    const auto positive = [&](const char *name, double *value) {
        if (!parser.isSet(name))
            return true;
        bool ok = false;
        *value = parser.value(name).toDouble(&ok);
        if (!ok || *value <= 0) {
            *error = tr("--%1 expects a positive number, got \"%2\"")
                         .arg(QLatin1String(name), parser.value(name));
            return false;
        }
        return true;
    };
    if (!positive("segment-minutes", &out.segmentMinutes) ||
        !positive("segment-gib", &out.segmentGiB))
        return false;
    out.segmentEnabled = out.segmentMinutes > 0 || out.segmentGiB > 0;
    if (out.segmentEnabled && !out.fileEnabled) {
        *error = tr("segment limits need --record");
        return false;
    }
    const QDateTime now = QDateTime::currentDateTime();
    for (const auto &[name, moment, stop] :
         {std::tuple{"start-at", &options->outputTimes.start, false},
          std::tuple{"stop-at", &options->outputTimes.stop, true}}) {
        if (!parser.isSet(name))
            continue;
        const std::optional<OutputMoment> read = readOutputMoment(parser.value(name), stop, now);
        if (!read || read->kind == OutputMoment::Kind::ByHand) {
            *error = tr("--%1 expects a date-time (2026-11-26T21:00), a time of day (21:00) or "
                        "\"schedule\", got \"%2\"")
                         .arg(QString::fromLatin1(name), parser.value(name));
            return false;
        }
        *moment = *read;
    }
    double keepFree = 0;
    if (!positive("keep-free", &keepFree))
        return false;
    if (keepFree > 0 && !out.segmentEnabled) {
        *error =
            tr("--keep-free deletes old segments: it needs --segment-minutes or --segment-gib");
        return false;
    }
    out.keepFreeMiB = qint64(keepFree);
    for (const QString &value : parser.values("stream")) {
        // "NAME=URL": the target takes that profile.
        QString url;
        const QString profile = profiles::splitName(value, &url);
        StreamTarget target = OutputRules::parseStreamTarget(url);
        target.profile = profiles::isDefault(profile) ? QString() : profile;
        out.streamTargets << target;
    }
    if (parser.isSet("size")) {
        const QStringList parts = parser.value("size").toLower().split('x');
        bool okW = false;
        bool okH = false;
        const int w = parts.value(0).toInt(&okW);
        const int h = parts.value(1).toInt(&okH);
        if (parts.size() != 2 || !okW || !okH || w < 2 || h < 2 || w > 8192 || h > 8192) {
            *error = tr("--size expects WIDTHxHEIGHT, got \"%1\"").arg(parser.value("size"));
            return false;
        }
        if (w % 2 || h % 2) {
            // Encoders work on whole 2x2 blocks of colour: an odd size would silently shrink.
            *error =
                tr("--size expects an even width and height, got \"%1\"").arg(parser.value("size"));
            return false;
        }
        options->outputSize = QSize(w, h);
    }
    if (parser.isSet("fps")) {
        const QString fps = parser.value("fps");
        if (fps != "30" && fps != "60") {
            *error = tr("--fps expects 30 or 60, got \"%1\"").arg(fps);
            return false;
        }
        out.fps = fps.toDouble();
    }
    if (parser.isSet("bitrate")) {
        bool ok = false;
        out.bitrateKbps = parser.value("bitrate").toInt(&ok);
        if (!ok || out.bitrateKbps < 100 || out.bitrateKbps > 400000) {
            *error = tr("--bitrate expects kbit/s from 100 to 400000, got \"%1\"")
                         .arg(parser.value("bitrate"));
            return false;
        }
    }
    if (parser.isSet("encoder")) {
        static const QStringList modes{"auto", "hardware", "software"};
        const int mode = int(modes.indexOf(parser.value("encoder").toLower()));
        if (mode < 0) {
            *error = tr("--encoder expects auto, hardware or software, got \"%1\"")
                         .arg(parser.value("encoder"));
            return false;
        }
        out.encoderMode = mode;
    }
    if (parser.isSet("preset")) {
        static const QStringList presets{"performance", "balanced", "quality"};
        const int preset = int(presets.indexOf(parser.value("preset").toLower()));
        if (preset < 0) {
            *error = tr("--preset expects performance, balanced or quality, got \"%1\"")
                         .arg(parser.value("preset"));
            return false;
        }
        out.qualityPreset = preset;
    }
    if (!readProfileOptions(parser, out, error))
        return false;
    // The engine's checks, before anything starts (an output that is not given is no problem).
    const Problem problem = OutputRules::check(
        {out, {options->outputSize.isValid(), options->outputSize}}, options->outputSize);
    if (problem && problem.kind != ProblemKind::NothingToWrite) {
        const bool recording = problem.kind == ProblemKind::RecordingUnknownContainer ||
                               problem.kind == ProblemKind::RecordingFolderMissing ||
                               problem.kind == ProblemKind::RecordingFolderNotWritable;
        const bool profile = problem.kind >= ProblemKind::ProfileBadName &&
                             problem.kind <= ProblemKind::IsoNeedsRecording;
        *error = (recording ? QStringLiteral("--record: ")
                  : profile ? QStringLiteral("--profile: ")
                            : QStringLiteral("--stream: ")) +
                 problemText(problem);
        return false;
    }
    return true;
}

bool readAudioOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    for (const QString &value : parser.values("volume")) {
        const qsizetype eq = value.indexOf('=');
        bool okChannel = false;
        bool okVolume = false;
        const int channel = eq > 0 ? value.left(eq).toInt(&okChannel) : 0;
        const double volume = eq > 0 ? value.mid(eq + 1).toDouble(&okVolume) : -1;
        if (!okChannel || channel < 1 || channel > 4 || !okVolume || volume < 0 || volume > 4) {
            *error = tr("--volume expects N=V with N from 1 to 4 and V from 0 to 4, got \"%1\"")
                         .arg(value);
            return false;
        }
        options->channelVolumes.insert(channel - 1, volume);
    }
    if (parser.isSet("program-volume")) {
        bool ok = false;
        options->programVolume = parser.value("program-volume").toDouble(&ok);
        if (!ok || options->programVolume < 0 || options->programVolume > 4) {
            *error = tr("--program-volume expects a number from 0 to 4, got \"%1\"")
                         .arg(parser.value("program-volume"));
            return false;
        }
    }
    if (parser.isSet("gain")) {
        bool ok = false;
        options->programGainPercent = parser.value("gain").toDouble(&ok);
        if (!ok || options->programGainPercent < 0 || options->programGainPercent > 1000) {
            *error = tr("--gain expects a percentage from 0 to 1000, got \"%1\"")
                         .arg(parser.value("gain"));
            return false;
        }
    }
    return true;
}

bool readControlOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    if (parser.isSet("control-port")) {
        bool ok = false;
        const int port = parser.value("control-port").trimmed().toInt(&ok);
        if (!ok || port < 1 || port > 65535) {
            *error = tr("--control-port expects a port from 1 to 65535, got \"%1\"")
                         .arg(parser.value("control-port"));
            return false;
        }
        options->controlPort = quint16(port);
    }
    if (parser.isSet("control-bind")) {
        const QString address = parser.value("control-bind").trimmed();
        if (QHostAddress(address).isNull()) {
            *error = tr("--control-bind expects an IP address such as 127.0.0.1 or ::1, got "
                        "\"%1\"")
                         .arg(parser.value("control-bind"));
            return false;
        }
        options->controlBind = address;
    }
    return true;
}

bool readOverlayOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    int textId = 1;
    for (const QString &words : parser.values("text")) {
        TextOverlayData overlay;
        if (!parseTextOverlaySpec(words, textId++, &overlay, error))
            return false;
        options->texts << overlay;
    }
    int mediaId = 1;
    for (const auto &[name, kind] : {std::pair{"image", MediaOverlayRecord::StillImage},
                                     std::pair{"video", MediaOverlayRecord::OverlayVideo}}) {
        for (const QString &spec : parser.values(name)) {
            MediaOverlayRecord record;
            if (!parseMediaOverlaySpec(spec, kind, mediaId++, &record, error))
                return false;
            const QFileInfo file(record.filePath);
            if (!file.isFile() || !file.isReadable()) {
                *error = tr("overlay \"%1\": \"%2\" is not a file that can be read")
                             .arg(spec, record.filePath);
                return false;
            }
            options->media << record;
        }
    }
    if (options->media.size() > OverlayScene::kMaxMediaOverlays) {
        *error = tr("at most %1 image and video overlays").arg(OverlayScene::kMaxMediaOverlays);
        return false;
    }
    return true;
}

bool readFailoverOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    FailoverSettings &failover = options->failover;
    for (const QString &value : parser.values("backup")) {
        const qsizetype eq = value.indexOf('=');
        bool ok = false;
        const int channel = eq > 0 ? value.left(eq).trimmed().toInt(&ok) : 0;
        QString backup = eq > 0 ? value.mid(eq + 1).trimmed() : QString();
        if (!ok || channel < 1 || channel > 4 || backup.isEmpty()) {
            *error = tr("--backup expects N=ADDRESS or N=channel:M with N from 1 to 4, got "
                        "\"%1\"")
                         .arg(value);
            return false;
        }
        if (!backup.contains(QLatin1Char(':')) && QFileInfo::exists(backup))
            backup = QFileInfo(backup).absoluteFilePath();
        failover.backups[std::size_t(channel - 1)] = backup;
        failover.enabled = true;
    }
    if (parser.isSet("slate")) {
        failover.slatePath = QFileInfo(parser.value("slate")).absoluteFilePath();
        failover.enabled = true;
    }
    failover.slateText = parser.value("slate-text");
    for (const auto &[name, target] : {std::pair{"failover-ms", &failover.failoverMs},
                                       std::pair{"return-ms", &failover.returnMs}}) {
        if (!parser.isSet(name))
            continue;
        bool ok = false;
        const int ms = parser.value(name).toInt(&ok);
        if (!ok || ms < 100 || ms > 3'600'000) {
            *error = tr("--%1 expects milliseconds from 100 to 3600000, got \"%2\"")
                         .arg(QString::fromLatin1(name), parser.value(name));
            return false;
        }
        *target = ms;
        failover.enabled = failover.enabled || QLatin1String(name) == QLatin1String("failover-ms");
    }
    return true;
}

} // namespace

bool readShowOptions(const QCommandLineParser &parser, ShowOptions *options, QString *error)
{
    const auto channelNumber = [](const QString &text, bool *ok) {
        const int n = text.trimmed().toInt(ok);
        *ok = *ok && n >= 1 && n <= 4;
        return n - 1;
    };
    for (const QString &value : parser.values("channel")) {
        const qsizetype eq = value.indexOf('=');
        bool ok = false;
        const int index = eq > 0 ? channelNumber(value.left(eq), &ok) : -1;
        const QString address = eq > 0 ? value.mid(eq + 1).trimmed() : QString();
        if (!ok || address.isEmpty()) {
            *error = tr("--channel expects N=ADDRESS with N from 1 to 4, got \"%1\"").arg(value);
            return false;
        }
        options->channels.insert(index, address);
    }
    for (const QString &value : parser.values("microphone")) {
        const qsizetype eq = value.indexOf('=');
        bool ok = false;
        const int index = eq > 0 ? channelNumber(value.left(eq), &ok) : -1;
        const QString name = eq > 0 ? value.mid(eq + 1).trimmed() : QString();
        if (!ok || name.isEmpty()) {
            *error = tr("--microphone expects N=NAME with N from 1 to 4, got \"%1\"").arg(value);
            return false;
        }
        options->microphones.insert(index, QStringLiteral("dshow://capture?audio=") +
                                               QString::fromLatin1(QUrl::toPercentEncoding(name)));
    }
    if (parser.isSet("base")) {
        bool ok = false;
        options->baseChannel = channelNumber(parser.value("base"), &ok);
        if (!ok) {
            *error =
                tr("--base expects a channel from 1 to 4, got \"%1\"").arg(parser.value("base"));
            return false;
        }
    }
    options->startOutputs = parser.isSet("start-outputs");
    if (parser.isSet("duration")) {
        bool ok = false;
        options->durationSeconds = parser.value("duration").toDouble(&ok);
        if (!ok || options->durationSeconds <= 0) {
            *error = tr("--duration expects a positive number of seconds, got \"%1\"")
                         .arg(parser.value("duration"));
            return false;
        }
    }
    if (!readOutputOptions(parser, options, error) || !readAudioOptions(parser, options, error) ||
        !readOverlayOptions(parser, options, error) ||
        !readControlOptions(parser, options, error) || !readFailoverOptions(parser, options, error))
        return false;
    options->demo = parser.isSet("demo");
    options->scheduleFile = parser.value("schedule").trimmed();
    if (parser.isSet("transition")) {
        QString why;
        const auto transition = transitions::parse(parser.value("transition"), &why);
        if (!transition) {
            *error = tr("--transition: %1, got \"%2\"").arg(why, parser.value("transition"));
            return false;
        }
        options->scheduleTransition = *transition;
        if (!transition->stingerFile.isEmpty())
            options->scheduleTransition.stingerFile =
                QFileInfo(transition->stingerFile).absoluteFilePath();
    }
    if (options->demo && !options->scheduleFile.isEmpty()) {
        *error = tr("--demo brings its own schedule; leave out --schedule");
        return false;
    }
    if (options->demo || !options->scheduleFile.isEmpty())
        return true; // the schedule decides the base
    // The window may start without a source: the operator chooses them there.
    if (!parser.isSet("headless") && !parser.isSet("demo"))
        return true;
    // A show driven by the remote control may start empty: its sources come later.
    if (options->controlPort > 0 && !options->channels.contains(options->baseChannel) &&
        !parser.isSet("base"))
        return true;
    if (options->channels.isEmpty()) {
        *error = tr("--headless needs at least one --channel");
        return false;
    }
    if (!options->channels.contains(options->baseChannel)) {
        *error = tr("the base channel %1 has no source").arg(options->baseChannel + 1);
        return false;
    }
    return true;
}

} // namespace selvane
