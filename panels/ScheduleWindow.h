#pragma once

// The Program Schedule window: the schedule editor and its controls. It owns the models of the
// editor rows (base clips and overlay clips, each with its start and end as date-times), the
// timeline origin they are measured from, the ruler that draws them, the undo stack every edit
// goes through (one command each, Ctrl+Z / Ctrl+Shift+Z), and the file commands (Import,
// Export), Check and Start/Stop. The rows become a ProgramArrangement only when collected
// (arrangement()): offsets are milliseconds from the origin, the origin is written as
// "yyyy-MM-dd HH:mm:ss". Checking and running are the engine's: the window asks the engine to
// check, load, start and stop a schedule, and follows the engine's scheduleRunningChanged,
// so a schedule started elsewhere (the command line) shows here as running too, with its rows.
//
// Every box it shows is a QMessageBox named "scheduleMessage", a child of the window.
//
// GUI thread only. Emits nothing; the engine's signals tell the rest of the window.

#include "engine/EngineTypes.h"
#include "panels/ClipDialogs.h"
#include "panels/ScheduleEdit.h"

#include <QJsonObject>
#include <QMessageBox>
#include <QWidget>

class QAction;
class QDateTimeEdit;
class QLabel;
class QPushButton;
class QTableView;
class QTimer;
class QUndoStack;

namespace selvane {

class BaseRowsModel;
class Engine;
class OverlayRowsModel;
class ScheduleTimeline;

class ScheduleWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ScheduleWindow(Engine *engine, QWidget *parent = nullptr);

    // The rows as an arrangement, not validated.
    ProgramArrangement arrangement() const;
    // Replaces the rows (and the origin) with the arrangement's clips.
    void loadArrangement(const ProgramArrangement &arrangement);
    QDateTime origin() const;
    void setOrigin(const QDateTime &origin);

    // The file commands after their file dialogs; false (after its box) on failure.
    bool importFrom(const QString &path);
    bool exportTo(const QString &path);

    ScheduleTimeline *timeline() const { return m_timeline; }
    // Every edit of the rows and the origin, one command each.
    QUndoStack *undoStack() const { return m_undo; }

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void retranslateUi();
    void importSchedule();
    void exportSchedule();
    // The rows collected and checked for export; false after the box that says why not.
    bool readyToExport(ProgramArrangement *arrangement);
    void checkSchedule();
    void startOrStop();
    void onRunningChanged(bool running);
    void showRunningArrangement();
    void updatePolling();
    void pollPlayhead();

    void addBase();
    void editBase();
    void addOverlay();
    void editOverlay();
    void removeRow(bool overlay);
    void moveRow(bool overlay, int delta);
    void clearRows(bool overlay);

    // The editor as it stands, and the row chosen in it.
    ScheduleEditorState state() const;
    ScheduleChoice choice() const;
    // Pushes the edit from the current state to `after` (which then stands, `chosen` chosen).
    void edit(const QString &text, const ScheduleEditorState &after, ScheduleChoice chosen,
              bool originOnly = false);
    // Shows a state: the undo commands call it.
    void apply(const ScheduleEditorState &state, ScheduleChoice chosen);
    void originEdited(const QDateTime &origin);

    void refreshTables();
    void refreshTimeline();
    void selectRow(bool overlay, int row);
    QDateTime nextBaseStart() const;

    // A modal box named "scheduleMessage"; returns the button pressed.
    QMessageBox::StandardButton
    showMessage(QMessageBox::Icon icon, const QString &title, const QString &text,
                QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);

    Engine *m_engine = nullptr;
    BaseRowsModel *m_baseModel = nullptr;
    OverlayRowsModel *m_overlayModel = nullptr;
    // The loaded file's failover settings and output stretches (at their times; an invalid end
    // runs until the schedule ends): kept as they were and written back with the clips.
    struct Carried
    {
        QJsonObject failover;
        QList<std::pair<QDateTime, QDateTime>> outputs;
    } m_carried;
    QDateTime m_committedOrigin; // the origin of the last edit (the box may be ahead of it)
    QUndoStack *m_undo = nullptr;
    QAction *m_undoAction = nullptr;
    QAction *m_redoAction = nullptr;
    bool m_running = false;

    QLabel *m_originLabel = nullptr;
    QDateTimeEdit *m_origin = nullptr;
    QLabel *m_baseTitle = nullptr;
    QTableView *m_baseTable = nullptr;
    QPushButton *m_addBase = nullptr;
    QPushButton *m_editBase = nullptr;
    QPushButton *m_removeBase = nullptr;
    QPushButton *m_upBase = nullptr;
    QPushButton *m_downBase = nullptr;
    QPushButton *m_clearBase = nullptr;
    QLabel *m_overlayTitle = nullptr;
    QTableView *m_overlayTable = nullptr;
    QPushButton *m_addOverlay = nullptr;
    QPushButton *m_editOverlay = nullptr;
    QPushButton *m_removeOverlay = nullptr;
    QPushButton *m_upOverlay = nullptr;
    QPushButton *m_downOverlay = nullptr;
    QPushButton *m_clearOverlay = nullptr;
    ScheduleTimeline *m_timeline = nullptr;
    QPushButton *m_undoButton = nullptr;
    QPushButton *m_redoButton = nullptr;
    QPushButton *m_import = nullptr;
    QPushButton *m_export = nullptr;
    QPushButton *m_check = nullptr;
    QPushButton *m_startStop = nullptr;
    QLabel *m_state = nullptr;
    QLabel *m_summary = nullptr;
    QTimer *m_poll = nullptr;
};

} // namespace selvane
