#pragma once

// The two dialogs of the schedule editor: one base clip (what the program shows: an input
// channel, an image folder played as slides, or a video file) and one overlay clip (a text, an
// image or a video in a rectangle of the canvas), each with its start and end date-time and an
// "∞" box for an open-ended clip. They edit a row of the editor, which keeps its times as
// date-times and turns them into offsets from the timeline origin only when the schedule is
// collected. Fields the dialog does not show (a text's style, an image clip's own file list)
// pass through an edit unchanged.
//
// GUI thread only; modal. They emit nothing beyond QDialog's accepted/rejected.

#include "engine/EngineTypes.h"

#include <QDateTime>
#include <QDialog>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QDialogButtonBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace selvane {

// A base clip as the editor holds it: the record plus its times as date-times.
struct ScheduleBaseRow
{
    SceneClip clip;
    QDateTime start;
    QDateTime end;
    bool openEnded = false;
};

// An overlay clip as the editor holds it.
struct ScheduleOverlayRow
{
    OverlayClip clip;
    QDateTime start;
    QDateTime end;
    bool openEnded = false;
};

// The start/end pair with its "∞" box, shared by both dialogs.
class ClipTimesEditor : public QObject
{
    Q_OBJECT

public:
    ClipTimesEditor(QFormLayout *form, QWidget *parent);
    void set(const QDateTime &start, const QDateTime &end, bool openEnded);
    QDateTime start() const;
    QDateTime end() const;
    bool openEnded() const;
    void retranslate();

private:
    QLabel *m_startLabel = nullptr;
    QLabel *m_endLabel = nullptr;
    QDateTimeEdit *m_start = nullptr;
    QDateTimeEdit *m_end = nullptr;
    QCheckBox *m_open = nullptr;
};

class BaseClipDialog : public QDialog
{
    Q_OBJECT

public:
    explicit BaseClipDialog(QWidget *parent = nullptr);
    void setRow(const ScheduleBaseRow &row);
    ScheduleBaseRow row() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void showSourceFields();
    void browseDirectory();
    void browseVideo();

    ScheduleBaseRow m_row;
    QFormLayout *m_form = nullptr;
    QLabel *m_idLabel = nullptr;
    QLineEdit *m_id = nullptr;
    QLabel *m_sourceLabel = nullptr;
    QComboBox *m_source = nullptr;
    QLabel *m_directoryLabel = nullptr;
    QWidget *m_directoryRow = nullptr;
    QLineEdit *m_directory = nullptr;
    QPushButton *m_browseDirectory = nullptr;
    QLabel *m_intervalLabel = nullptr;
    QSpinBox *m_interval = nullptr;
    QCheckBox *m_imageLoop = nullptr;
    QLabel *m_videoLabel = nullptr;
    QWidget *m_videoRow = nullptr;
    QLineEdit *m_video = nullptr;
    QPushButton *m_browseVideo = nullptr;
    QCheckBox *m_videoLoop = nullptr;
    ClipTimesEditor *m_times = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

class OverlayClipDialog : public QDialog
{
    Q_OBJECT

public:
    explicit OverlayClipDialog(QWidget *parent = nullptr);
    void setRow(const ScheduleOverlayRow &row);
    ScheduleOverlayRow row() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void showKindFields();
    void browseMedia();
    int chosenKind() const;

    ScheduleOverlayRow m_row;
    QFormLayout *m_form = nullptr;
    QLabel *m_idLabel = nullptr;
    QLineEdit *m_id = nullptr;
    QLabel *m_kindLabel = nullptr;
    QComboBox *m_kind = nullptr;
    QLabel *m_textLabel = nullptr;
    QLineEdit *m_text = nullptr;
    QLabel *m_mediaLabel = nullptr;
    QWidget *m_mediaRow = nullptr;
    QLineEdit *m_media = nullptr;
    QPushButton *m_browseMedia = nullptr;
    QLabel *m_rectLabel = nullptr;
    QDoubleSpinBox *m_x = nullptr;
    QDoubleSpinBox *m_y = nullptr;
    QDoubleSpinBox *m_w = nullptr;
    QDoubleSpinBox *m_h = nullptr;
    QLabel *m_opacityLabel = nullptr;
    QDoubleSpinBox *m_opacity = nullptr;
    ClipTimesEditor *m_times = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace selvane
