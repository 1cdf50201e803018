#pragma once

// The output settings at the operator's desk: the recording (file with a name pattern,
// container, segments), the stream targets (kind, server, key shown masked, on/off), the
// encoding (size, rate, bitrate, encoder, preset, keyframes, output gain), Start/Stop, and the
// status of each target and of the recording. Every choice is kept in the "output/" settings
// group. It builds the settings record the window starts the outputs with and applies the 8K
// rules; it starts nothing itself. "output/twinFolder" names the folder of the recording's twin
// copy (empty: none); "output/keepFreeMiB" makes a segmented recording a ring (0: off).
//
// "output/filePath" holds the folder and the name pattern: "{date}" and "{time}" in the name
// become the local date (yyyyMMdd) and time (HHmmss) when the outputs start, so that every take
// gets a name of its own. Stream targets live in "output/streams/N/" with "protocol", "enabled",
// "url" (the server; an HLS folder's playlist), "key", "profile" (empty: the default one),
// "hlsSegmentSeconds" and "hlsWindow".
//
// The encode profiles (EncodeProfilesBox, below the encoding) and the recording's profile and
// channels recorded on their own (RecordingProfileBox, in the recording part) keep their own
// settings; this panel puts them into the record it builds, with the encoder and keyframe
// interval of the encoding for every profile.
//
// GUI thread only. Emits startOutputsRequested and stopOutputsRequested (the buttons),
// programGainChanged(linear) (the output gain), settingsChanged (any choice).

#include "engine/EngineTypes.h"
#include "panels/StreamTargetDialog.h"
#include "panels/StreamTargetModel.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableView;
class QVBoxLayout;

namespace selvane {

class EncodeProfilesBox;
class RecordingProfileBox;

class OutputSettingsPanel : public QWidget
{
    Q_OBJECT

public:
    using TargetEntry = StreamTargetEntry;

    explicit OutputSettingsPanel(QWidget *parent = nullptr);

    OutputSettings settings() const;
    QList<TargetEntry> targets() const;
    void setTargets(const QList<TargetEntry> &targets);
    // Profiles from elsewhere (a show's), kept as the operator's.
    void setProfiles(const QList<EncodeProfile> &profiles);
    void setRecording(bool enabled, const QString &path);
    void setOutputsRunning(bool running);
    // Target status by the engine's index: the position among the enabled targets.
    void setTargetStatus(int index, const QString &status);
    void showStats(const OutputStats &stats);
    int gainPercent() const;
    // The recording path with "{date}" and "{time}" filled in for now.
    static QString expandPattern(const QString &pattern);
    // Settings of the show's continuity (failover), shown below the encoding.
    void addSection(QWidget *section);

signals:
    void startOutputsRequested();
    void stopOutputsRequested();
    void programGainChanged(float linearGain);
    void settingsChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    void load();
    void save();
    void saveTargets();
    void showTargets();
    void editTarget(int row);
    void applyEightKRules();
    void browseFolder();
    void retranslateUi();
    QSize chosenSize() const;

    StreamTargetModel *m_targetModel = nullptr;
    bool m_running = false;
    bool m_loading = false;

    QLabel *m_recordingTitle = nullptr;
    QCheckBox *m_record = nullptr;
    QLineEdit *m_file = nullptr;
    QPushButton *m_browse = nullptr;
    QLabel *m_containerLabel = nullptr;
    QComboBox *m_container = nullptr;
    QCheckBox *m_segment = nullptr;
    QLabel *m_segmentHint = nullptr;
    QSpinBox *m_segmentMinutes = nullptr;
    QDoubleSpinBox *m_segmentGiB = nullptr;
    QLabel *m_recordingState = nullptr;
    QLabel *m_twinLabel = nullptr;
    QLineEdit *m_twin = nullptr; // the twin's folder: a copy of the recording of the same name
    QLabel *m_keepFreeLabel = nullptr;
    QSpinBox *m_keepFree = nullptr; // ring recording: MiB kept free by deleting old segments
    RecordingProfileBox *m_recordingProfile = nullptr;

    QLabel *m_targetsTitle = nullptr;
    QLabel *m_sharedHint = nullptr;
    QTableView *m_targetTable = nullptr;
    QPushButton *m_addTarget = nullptr;
    QPushButton *m_editTarget = nullptr;
    QPushButton *m_removeTarget = nullptr;

    QLabel *m_formatTitle = nullptr;
    QLabel *m_resolutionLabel = nullptr;
    QComboBox *m_resolution = nullptr;
    QLabel *m_fpsLabel = nullptr;
    QComboBox *m_fps = nullptr;
    QLabel *m_bitrateLabel = nullptr;
    QSpinBox *m_bitrate = nullptr;
    QCheckBox *m_bitrateAuto = nullptr;
    QLabel *m_encoderLabel = nullptr;
    QComboBox *m_encoder = nullptr;
    QLabel *m_presetLabel = nullptr;
    QComboBox *m_preset = nullptr;
    QLabel *m_keyframeLabel = nullptr;
    QSpinBox *m_keyframe = nullptr;
    QLabel *m_gainLabel = nullptr;
    QSpinBox *m_gain = nullptr;
    QLabel *m_gainHint = nullptr;
    QLabel *m_lockHint = nullptr;
    QLabel *m_eightKHint = nullptr;
    EncodeProfilesBox *m_profiles = nullptr;

    QVBoxLayout *m_sections = nullptr;
    QPushButton *m_start = nullptr;
    QPushButton *m_stop = nullptr;
};

} // namespace selvane
