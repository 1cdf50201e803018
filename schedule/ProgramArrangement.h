#pragma once

// The program arrangement ("Program Schedule"): base clips that decide the program picture and
// overlay clips laid over it, each with a start and an end offset in milliseconds from the
// arrangement's timeline zero. Plain values with the JSON file format and the validation rules
// shared by the schedule editor and the headless face. Any thread.

#include "compose/TextOverlayData.h"
#include "media/ProgramBus.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>

struct QJsonParseError;

struct SceneClip
{
    enum Kind : int
    {
        Channel = 0,
        ImagePlay = 1,
        SceneVideo = 2,
    };
    QString id;
    qint64 startMs = 0;
    qint64 endMs = 0; // 0: open-ended, runs until the next clip takes over
    int kind = Channel;
    int channel = 0;
    QStringList paths;
    int intervalMs = 2000;
    bool imageLoop = true;
    QString sceneVideoPath;
    bool sceneVideoLoop = false;
    QString imageDirectory;
    // How a channel clip comes on air; none: the schedule's default (a cut unless the show
    // says otherwise).
    std::optional<selvane::Transition> transition;

    friend bool operator==(const SceneClip &, const SceneClip &) = default;
};

struct OverlayClip
{
    enum Kind : int
    {
        Text = 0,
        Video = 1,
        Image = 2,
    };
    QString id;
    qint64 startMs = 0;
    qint64 endMs = 0;
    int kind = Text;
    QString path;
    QString imageDirectory;
    double x = 0, y = 0, w = 0.5, h = 0.5; // normalised to the canvas
    double opacity = 1.0;
    TextOverlayData textData;

    friend bool operator==(const OverlayClip &, const OverlayClip &) = default;
};

// A stretch of the schedule's timeline during which the outputs run: they start at startMs and
// stop at endMs (0: when the schedule ends or is stopped).
struct OutputSpan
{
    qint64 startMs = 0;
    qint64 endMs = 0;

    friend bool operator==(const OutputSpan &, const OutputSpan &) = default;
};

struct ProgramArrangement
{
    int version = 3;
    QString timelineZero; // "yyyy-MM-dd HH:mm:ss", may be empty
    QList<SceneClip> sceneClips;
    QList<OverlayClip> overlayClips;
    // What stands in when a channel fails while the schedule runs, as the remote control's
    // failover fields; empty: the show's own settings. Checked and applied by the engine.
    QJsonObject failover;
    // When the outputs run while the schedule does, in order; empty: started by hand.
    QList<OutputSpan> outputs;

    friend bool operator==(const ProgramArrangement &, const ProgramArrangement &) = default;
};

namespace arrangement {

inline constexpr auto kFormatMarker = "selvane_program_arrangement";
inline constexpr int kCurrentVersion = 3;
inline constexpr int kCanvasWidth = 1920;
inline constexpr int kCanvasHeight = 1080;

QByteArray toJson(const ProgramArrangement &arrangement);
// On failure: an empty arrangement (version 3, no clips) and `error` set. What was read but
// changed to fit (a channel outside the four) is told in `warnings`.
ProgramArrangement fromJson(const QByteArray &bytes, QString *error,
                            QStringList *warnings = nullptr);

// The outcome of a validation: the first failure's message and its box title, or success.
struct Validation
{
    bool ok = true;
    QString title;
    QString message;
};
// Where a document that does not parse went wrong and what was expected there: "line 3,
// column 7: expected \",\" between two values", in the operator's language.
QString parseErrorText(const QByteArray &bytes, const QJsonParseError &error);

// Checks the clips in order; media files and folders must exist on disk.
Validation validate(const ProgramArrangement &arrangement);

// Base clips that show a channel without a source (`hasSource` by channel 0..3), one warning
// each: the schedule runs, but those clips show the channel's last picture or black.
QStringList unsourcedChannelWarnings(const ProgramArrangement &arrangement,
                                     const std::array<bool, 4> &hasSource);

// The images of a folder that an image clip plays when it lists none, sorted by name.
QStringList imagesInDirectory(const QString &directory);

} // namespace arrangement
