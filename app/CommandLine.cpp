#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace selvane {

namespace {
QString tr(const char *text) { return QCoreApplication::translate("CommandLine", text); }
} // namespace

void configureCommandLine(QCommandLineParser &parser)
{
    parser.setApplicationDescription(
        tr("Selvane live video mixer. Without options the mixer window opens."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"headless", tr("Run the engine without a window (no instance lock).")});
    parser.addOption({"channel",
                      tr("Load a source into input channel N (1-4): a file path, a network URL, "
                         "a capture address or lavfi://GRAPH. Repeatable."),
                      "N=ADDRESS"});
    parser.addOption({"base", tr("Channel (1-4) that forms the program picture. Default 1."), "N"});
    parser.addOption({"duration", tr("Stop after this many seconds (default: until Ctrl+C)."),
                      "SECONDS"});
}

LaunchFace launchFaceFor(const QStringList &arguments)
{
    QCommandLineParser parser;
    configureCommandLine(parser);
    // Qt's own GUI options (-platform, -style, ...) belong to the application object.
    QStringList ours{arguments.value(0)};
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &arg = arguments[i];
        static const QStringList qtOptionsWithValue{"-platform", "-style", "-stylesheet",
                                                    "-qwindowgeometry", "-qwindowtitle",
                                                    "-qwindowicon", "-display", "-session"};
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
    if (parser.isSet("headless"))
        return LaunchFace::Headless;
    return LaunchFace::Gui;
}

bool readHeadlessOptions(const QCommandLineParser &parser, HeadlessOptions *options,
                         QString *error)
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
    if (parser.isSet("base")) {
        bool ok = false;
        options->baseChannel = channelNumber(parser.value("base"), &ok);
        if (!ok) {
            *error = tr("--base expects a channel from 1 to 4, got \"%1\"").arg(parser.value("base"));
            return false;
        }
    }
    if (parser.isSet("duration")) {
        bool ok = false;
        options->durationSeconds = parser.value("duration").toDouble(&ok);
        if (!ok || options->durationSeconds <= 0) {
            *error = tr("--duration expects a positive number of seconds, got \"%1\"")
                         .arg(parser.value("duration"));
            return false;
        }
    }
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
