#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace selvane {

void configureCommandLine(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Selvane live video mixer. Without options the mixer window opens."));
    parser.addHelpOption();
    parser.addVersionOption();
}

LaunchFace launchFaceFor(const QStringList &arguments)
{
    QCommandLineParser parser;
    configureCommandLine(parser);
    // Qt's own GUI options (-platform, -style, ...) belong to the application object.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
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
    return LaunchFace::Gui;
}

} // namespace selvane
