#include "panels/ScheduleWindow.h"

#include "engine/Engine.h"
#include "engine/ScheduleFiles.h"
#include "panels/ScheduleRowsModel.h"
#include "panels/ScheduleTimeline.h"

#include <QDateTimeEdit>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QUndoStack>
#include <QVBoxLayout>
#include <algorithm>

namespace selvane {

namespace {

constexpr auto kOriginFormat = "yyyy-MM-dd HH:mm:ss";
constexpr int kPollMs = 200;

// Now, to the second: the origin is shown and stored without milliseconds.
QDateTime nowToTheSecond()
{
    QDateTime now = QDateTime::currentDateTime();
    now.setTime(QTime(now.time().hour(), now.time().minute(), now.time().second()));
    return now;
}

QTableView *clipTable(QAbstractItemModel *model, QWidget *parent)
{
    auto *table = new QTableView(parent);
    table->setModel(model);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->verticalHeader()->setVisible(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setMinimumSectionSize(64);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    table->setAlternatingRowColors(true);
    table->setWordWrap(false);
    return table;
}

int selectedRow(const QTableView *table)
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

// A fresh id: the prefix and the first number no row uses yet.
template <typename Rows> QString freshId(const Rows &rows, const QString &prefix)
{
    for (int n = int(rows.size()) + 1;; ++n) {
        const QString id = prefix + QString::number(n);
        if (std::none_of(rows.begin(), rows.end(), [&](const auto &r) { return r.clip.id == id; }))
            return id;
    }
}

} // namespace

ScheduleWindow::ScheduleWindow(Engine *engine, QWidget *parent)
    : QWidget(parent, Qt::Window), m_engine(engine)
{
    m_originLabel = new QLabel(this);
    m_origin = new QDateTimeEdit(nowToTheSecond(), this);
    m_origin->setDisplayFormat(ScheduleRowsModel::kTimeFormat);
    m_origin->setCalendarPopup(true);
    auto *originRow = new QHBoxLayout;
    originRow->addWidget(m_originLabel);
    originRow->addWidget(m_origin);
    originRow->addStretch(1);

    m_timeline = new ScheduleTimeline(this);

    const auto buttonRow = [this](std::initializer_list<QPushButton **> buttons) {
        auto *row = new QHBoxLayout;
        for (QPushButton **button : buttons) {
            *button = new QPushButton(this);
            row->addWidget(*button);
        }
        row->addStretch(1);
        return row;
    };

    m_baseModel = new BaseRowsModel(this);
    m_overlayModel = new OverlayRowsModel(this);
    m_baseTitle = new QLabel(this);
    m_baseTable = clipTable(m_baseModel, this);
    auto *baseButtons =
        buttonRow({&m_addBase, &m_editBase, &m_removeBase, &m_upBase, &m_downBase, &m_clearBase});
    m_overlayTitle = new QLabel(this);
    m_overlayTable = clipTable(m_overlayModel, this);
    auto *overlayButtons = buttonRow({&m_addOverlay, &m_editOverlay, &m_removeOverlay, &m_upOverlay,
                                      &m_downOverlay, &m_clearOverlay});

    // Every edit of the rows and the origin is a command on the undo stack: Ctrl+Z and
    // Ctrl+Shift+Z here, the buttons, and the main window's Edit menu.
    m_undo = new QUndoStack(this);
    m_undoAction = m_undo->createUndoAction(this);
    m_undoAction->setShortcut(QKeySequence::Undo);
    m_redoAction = m_undo->createRedoAction(this);
    m_redoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    addAction(m_undoAction);
    addAction(m_redoAction);

    auto *bottom = new QHBoxLayout;
    for (QPushButton **button : {&m_undoButton, &m_redoButton}) {
        *button = new QPushButton(this);
        bottom->addWidget(*button);
    }
    connect(m_undoButton, &QPushButton::clicked, m_undo, &QUndoStack::undo);
    connect(m_redoButton, &QPushButton::clicked, m_undo, &QUndoStack::redo);
    connect(m_undo, &QUndoStack::canUndoChanged, m_undoButton, &QWidget::setEnabled);
    connect(m_undo, &QUndoStack::canRedoChanged, m_redoButton, &QWidget::setEnabled);
    m_undoButton->setEnabled(false);
    m_redoButton->setEnabled(false);
    bottom->addSpacing(12);
    for (QPushButton **button : {&m_import, &m_export, &m_check}) {
        *button = new QPushButton(this);
        bottom->addWidget(*button);
    }
    bottom->addStretch(1);
    m_summary = new QLabel(this);
    m_state = new QLabel(this);
    m_state->setAlignment(Qt::AlignCenter);
    m_state->setMinimumWidth(90);
    m_startStop = new QPushButton(this);
    m_startStop->setMinimumWidth(130);
    bottom->addWidget(m_summary);
    bottom->addSpacing(12);
    bottom->addWidget(m_state);
    bottom->addWidget(m_startStop);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(originRow);
    layout->addWidget(m_timeline);
    layout->addWidget(m_baseTitle);
    layout->addWidget(m_baseTable, 3);
    layout->addLayout(baseButtons);
    layout->addWidget(m_overlayTitle);
    layout->addWidget(m_overlayTable, 2);
    layout->addLayout(overlayButtons);
    layout->addLayout(bottom);

    m_poll = new QTimer(this);
    m_poll->setInterval(kPollMs);
    connect(m_poll, &QTimer::timeout, this, &ScheduleWindow::pollPlayhead);

    connect(m_origin, &QDateTimeEdit::dateTimeChanged, this, &ScheduleWindow::originEdited);
    connect(m_addBase, &QPushButton::clicked, this, &ScheduleWindow::addBase);
    connect(m_editBase, &QPushButton::clicked, this, &ScheduleWindow::editBase);
    connect(m_removeBase, &QPushButton::clicked, this, [this] { removeRow(false); });
    connect(m_upBase, &QPushButton::clicked, this, [this] { moveRow(false, -1); });
    connect(m_downBase, &QPushButton::clicked, this, [this] { moveRow(false, 1); });
    connect(m_clearBase, &QPushButton::clicked, this, [this] { clearRows(false); });
    connect(m_baseTable, &QTableView::doubleClicked, this, &ScheduleWindow::editBase);
    connect(m_addOverlay, &QPushButton::clicked, this, &ScheduleWindow::addOverlay);
    connect(m_editOverlay, &QPushButton::clicked, this, &ScheduleWindow::editOverlay);
    connect(m_removeOverlay, &QPushButton::clicked, this, [this] { removeRow(true); });
    connect(m_upOverlay, &QPushButton::clicked, this, [this] { moveRow(true, -1); });
    connect(m_downOverlay, &QPushButton::clicked, this, [this] { moveRow(true, 1); });
    connect(m_clearOverlay, &QPushButton::clicked, this, [this] { clearRows(true); });
    connect(m_overlayTable, &QTableView::doubleClicked, this, &ScheduleWindow::editOverlay);
    connect(m_baseTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { m_timeline->setSelection(false, selectedRow(m_baseTable)); });
    connect(m_overlayTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { m_timeline->setSelection(true, selectedRow(m_overlayTable)); });
    connect(m_timeline, &ScheduleTimeline::clipClicked, this, &ScheduleWindow::selectRow);
    connect(m_import, &QPushButton::clicked, this, &ScheduleWindow::importSchedule);
    connect(m_export, &QPushButton::clicked, this, &ScheduleWindow::exportSchedule);
    connect(m_check, &QPushButton::clicked, this, &ScheduleWindow::checkSchedule);
    connect(m_startStop, &QPushButton::clicked, this, &ScheduleWindow::startOrStop);
    connect(m_engine, &Engine::scheduleRunningChanged, this, &ScheduleWindow::onRunningChanged);

    m_committedOrigin = m_origin->dateTime();
    m_running = m_engine->isScheduleRunning();
    if (m_running)
        showRunningArrangement();
    m_undo->clear(); // the window opens with no history
    retranslateUi();
    refreshTables();
    resize(920, 660);
}

// ---- rows and the arrangement ----

QDateTime ScheduleWindow::origin() const
{
    return m_origin->dateTime();
}

void ScheduleWindow::setOrigin(const QDateTime &origin)
{
    m_origin->setDateTime(origin);
}

ProgramArrangement ScheduleWindow::arrangement() const
{
    ProgramArrangement a;
    const QDateTime zero = origin();
    a.timelineZero = zero.toString(kOriginFormat);
    for (const ScheduleBaseRow &row : m_baseModel->rows()) {
        SceneClip clip = row.clip;
        clip.startMs = zero.msecsTo(row.start);
        clip.endMs = row.openEnded ? 0 : zero.msecsTo(row.end);
        a.sceneClips.append(clip);
    }
    for (const ScheduleOverlayRow &row : m_overlayModel->rows()) {
        OverlayClip clip = row.clip;
        clip.startMs = zero.msecsTo(row.start);
        clip.endMs = row.openEnded ? 0 : zero.msecsTo(row.end);
        a.overlayClips.append(clip);
    }
    // What the editor does not show rides along from the file, the outputs' stretches moving
    // with the clips when the origin does.
    a.failover = m_carried.failover;
    for (const auto &[start, end] : m_carried.outputs)
        a.outputs.append({zero.msecsTo(start), end.isValid() ? zero.msecsTo(end) : 0});
    return a;
}

void ScheduleWindow::loadArrangement(const ProgramArrangement &a)
{
    QDateTime zero = QDateTime::fromString(a.timelineZero, kOriginFormat);
    if (!zero.isValid())
        zero = QDateTime::fromString(a.timelineZero, Qt::ISODate);
    if (!zero.isValid()) {
        // No origin in the file: the earliest clip starts now.
        qint64 earliest = 0;
        bool any = false;
        for (const SceneClip &c : a.sceneClips) {
            earliest = any ? std::min(earliest, c.startMs) : c.startMs;
            any = true;
        }
        for (const OverlayClip &c : a.overlayClips) {
            earliest = any ? std::min(earliest, c.startMs) : c.startMs;
            any = true;
        }
        zero = nowToTheSecond().addMSecs(-earliest);
    }
    ScheduleEditorState loaded;
    for (const SceneClip &c : a.sceneClips)
        loaded.base.append({c, zero.addMSecs(c.startMs), zero.addMSecs(c.endMs), c.endMs == 0});
    for (const OverlayClip &c : a.overlayClips)
        loaded.overlay.append({c, zero.addMSecs(c.startMs), zero.addMSecs(c.endMs), c.endMs == 0});
    loaded.origin = zero;
    m_carried.failover = a.failover;
    m_carried.outputs.clear();
    for (const OutputSpan &span : a.outputs)
        m_carried.outputs.append({zero.addMSecs(span.startMs),
                                  span.endMs > 0 ? zero.addMSecs(span.endMs) : QDateTime()});
    edit(tr("Load Schedule"), loaded, {});
}

ScheduleEditorState ScheduleWindow::state() const
{
    return {m_baseModel->rows(), m_overlayModel->rows(), m_committedOrigin};
}

ScheduleChoice ScheduleWindow::choice() const
{
    const int base = selectedRow(m_baseTable);
    return base >= 0 ? ScheduleChoice{false, base}
                     : ScheduleChoice{true, selectedRow(m_overlayTable)};
}

void ScheduleWindow::edit(const QString &text, const ScheduleEditorState &after,
                          ScheduleChoice chosen, bool originOnly)
{
    m_undo->push(new ScheduleEdit(
        text, state(), choice(), after, chosen,
        [this](const ScheduleEditorState &s, ScheduleChoice c) { apply(s, c); }, originOnly));
}

void ScheduleWindow::apply(const ScheduleEditorState &s, ScheduleChoice chosen)
{
    m_baseModel->setRows(s.base);
    m_overlayModel->setRows(s.overlay);
    m_committedOrigin = s.origin;
    if (m_origin->dateTime() != s.origin) {
        const QSignalBlocker quiet(m_origin);
        m_origin->setDateTime(s.origin);
    }
    refreshTables();
    m_baseTable->clearSelection();
    m_overlayTable->clearSelection();
    m_timeline->setSelection(false, -1);
    selectRow(chosen.overlay, chosen.row);
}

void ScheduleWindow::originEdited(const QDateTime &origin)
{
    if (origin == m_committedOrigin)
        return;
    ScheduleEditorState after = state();
    after.origin = origin;
    edit(tr("Change Timeline Origin"), after, choice(), true);
}

QDateTime ScheduleWindow::nextBaseStart() const
{
    if (m_baseModel->rows().isEmpty())
        return origin();
    const ScheduleBaseRow &last = m_baseModel->rows().last();
    return last.openEnded ? last.start.addSecs(60) : last.end;
}

void ScheduleWindow::addBase()
{
    BaseClipDialog dialog(this);
    ScheduleBaseRow row;
    row.clip.id = freshId(m_baseModel->rows(), QStringLiteral("base"));
    row.start = nextBaseStart();
    row.end = row.start.addSecs(60);
    dialog.setRow(row);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ScheduleEditorState after = state();
    after.base.append(dialog.row());
    edit(tr("Add Base Clip"), after, {false, int(after.base.size()) - 1});
}

void ScheduleWindow::editBase()
{
    const int index = selectedRow(m_baseTable);
    if (index < 0)
        return;
    BaseClipDialog dialog(this);
    dialog.setRow(m_baseModel->rows()[index]);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ScheduleEditorState after = state();
    after.base[index] = dialog.row();
    edit(tr("Edit Base Clip"), after, {false, index});
}

void ScheduleWindow::addOverlay()
{
    OverlayClipDialog dialog(this);
    ScheduleOverlayRow row;
    row.clip.id = freshId(m_overlayModel->rows(), QStringLiteral("overlay"));
    row.start = origin();
    row.end = row.start.addSecs(60);
    dialog.setRow(row);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ScheduleEditorState after = state();
    after.overlay.append(dialog.row());
    edit(tr("Add Overlay Clip"), after, {true, int(after.overlay.size()) - 1});
}

void ScheduleWindow::editOverlay()
{
    const int index = selectedRow(m_overlayTable);
    if (index < 0)
        return;
    OverlayClipDialog dialog(this);
    dialog.setRow(m_overlayModel->rows()[index]);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ScheduleEditorState after = state();
    after.overlay[index] = dialog.row();
    edit(tr("Edit Overlay Clip"), after, {true, index});
}

void ScheduleWindow::removeRow(bool overlay)
{
    const int index = selectedRow(overlay ? m_overlayTable : m_baseTable);
    if (index < 0)
        return;
    ScheduleEditorState after = state();
    if (overlay)
        after.overlay.removeAt(index);
    else
        after.base.removeAt(index);
    const int count = int(overlay ? after.overlay.size() : after.base.size());
    edit(overlay ? tr("Remove Overlay Clip") : tr("Remove Base Clip"), after,
         {overlay, std::min(index, count - 1)});
}

void ScheduleWindow::moveRow(bool overlay, int delta)
{
    const int index = selectedRow(overlay ? m_overlayTable : m_baseTable);
    const int count = overlay ? m_overlayModel->rowCount() : m_baseModel->rowCount();
    const int target = index + delta;
    if (index < 0 || target < 0 || target >= count)
        return;
    ScheduleEditorState after = state();
    if (overlay)
        after.overlay.swapItemsAt(index, target);
    else
        after.base.swapItemsAt(index, target);
    const QString text =
        overlay ? (delta < 0 ? tr("Move Overlay Clip Up") : tr("Move Overlay Clip Down"))
                : (delta < 0 ? tr("Move Base Clip Up") : tr("Move Base Clip Down"));
    edit(text, after, {overlay, target});
}

void ScheduleWindow::clearRows(bool overlay)
{
    if ((overlay ? m_overlayModel->rowCount() : m_baseModel->rowCount()) == 0)
        return;
    const auto answer = overlay ? showMessage(QMessageBox::Question, tr("Clear Overlay Clips"),
                                              tr("Delete all overlay clips?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
                                : showMessage(QMessageBox::Question, tr("Clear Base Clips"),
                                              tr("Delete all base clips?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    ScheduleEditorState after = state();
    if (overlay)
        after.overlay.clear();
    else
        after.base.clear();
    edit(overlay ? tr("Clear Overlay Clips") : tr("Clear Base Clips"), after, {overlay, -1});
}

void ScheduleWindow::selectRow(bool overlay, int row)
{
    QTableView *table = overlay ? m_overlayTable : m_baseTable;
    QTableView *other = overlay ? m_baseTable : m_overlayTable;
    if (row < 0 || row >= table->model()->rowCount())
        return;
    other->clearSelection();
    table->selectRow(row);
    table->scrollTo(table->model()->index(row, 0));
    m_timeline->setSelection(overlay, row);
}

// ---- what the tables show ----

void ScheduleWindow::refreshTables()
{
    for (QTableView *table : {m_baseTable, m_overlayTable})
        for (int column = 0; column < ScheduleRowsModel::DetailsColumn; ++column)
            table->resizeColumnToContents(column);
    m_summary->setText(
        tr("Base %1  |  Overlay %2").arg(m_baseModel->rowCount()).arg(m_overlayModel->rowCount()));
    refreshTimeline();
}

void ScheduleWindow::refreshTimeline()
{
    m_timeline->setArrangement(arrangement());
}

// ---- file commands, check, start and stop ----

QMessageBox::StandardButton ScheduleWindow::showMessage(QMessageBox::Icon icon,
                                                        const QString &title, const QString &text,
                                                        QMessageBox::StandardButtons buttons,
                                                        QMessageBox::StandardButton defaultButton)
{
    QMessageBox box(icon, title, text, buttons, this);
    box.setObjectName(QStringLiteral("scheduleMessage"));
    if (defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(defaultButton);
    return QMessageBox::StandardButton(box.exec());
}

void ScheduleWindow::importSchedule()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Import Program Schedule"), QString(), tr("JSON (*.json);;All files (*)"));
    if (!path.isEmpty())
        importFrom(path);
}

bool ScheduleWindow::importFrom(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        showMessage(QMessageBox::Warning, tr("Import"), tr("Unable to open the file."));
        return false;
    }
    QString error;
    const ProgramArrangement a = ScheduleFiles::read(file.readAll(), &error);
    if (!error.isEmpty()) {
        showMessage(QMessageBox::Warning, tr("Import"),
                    QStringLiteral("%1\n\n%2").arg(QDir::toNativeSeparators(path), error));
        return false;
    }
    loadArrangement(a);
    return true;
}

bool ScheduleWindow::readyToExport(ProgramArrangement *a)
{
    *a = arrangement();
    if (a->sceneClips.isEmpty() && a->overlayClips.isEmpty()) {
        showMessage(QMessageBox::Warning, tr("Export"),
                    tr("There are no valid clips to export. Check the validation messages."));
        return false;
    }
    const arrangement::Validation check = ScheduleFiles::check(*a);
    if (!check.ok) {
        showMessage(QMessageBox::Warning, check.title, check.message);
        return false;
    }
    return true;
}

void ScheduleWindow::exportSchedule()
{
    // Checked before a file is asked for, so that no file dialog precedes a refusal.
    ProgramArrangement a;
    if (!readyToExport(&a))
        return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export Program Schedule"),
                                                      QStringLiteral("program_arrangement.json"),
                                                      tr("JSON (*.json)"));
    if (!path.isEmpty())
        exportTo(path);
}

bool ScheduleWindow::exportTo(const QString &path)
{
    ProgramArrangement a;
    if (!readyToExport(&a))
        return false;
    QFile file(path);
    const QByteArray json = ScheduleFiles::write(a);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(json) != json.size() ||
        !file.flush()) {
        showMessage(QMessageBox::Warning, tr("Export"), tr("Unable to write the file."));
        return false;
    }
    return true;
}

void ScheduleWindow::checkSchedule()
{
    const ProgramArrangement a = arrangement();
    const arrangement::Validation check = ScheduleFiles::check(a);
    if (!check.ok) {
        showMessage(QMessageBox::Warning, check.title, check.message);
        return;
    }
    std::array<bool, 4> hasSource{};
    const EngineStats stats = m_engine->stats();
    for (std::size_t c = 0; c < hasSource.size(); ++c)
        hasSource[c] = !stats.channels[c].source.isEmpty();
    const QStringList warnings = arrangement::unsourcedChannelWarnings(a, hasSource);
    const QString passed = tr("Schedule check passed: %1 base clip(s), %2 overlay clip(s).")
                               .arg(a.sceneClips.size())
                               .arg(a.overlayClips.size());
    if (warnings.isEmpty())
        showMessage(QMessageBox::Information, tr("Schedule Check"), passed);
    else
        showMessage(QMessageBox::Warning, tr("Schedule Check"),
                    passed + "\n\n" + warnings.join('\n'));
}

void ScheduleWindow::startOrStop()
{
    if (m_engine->isScheduleRunning()) {
        m_engine->stopSchedule();
        return;
    }
    const ProgramArrangement a = arrangement();
    if (a.sceneClips.isEmpty()) {
        showMessage(QMessageBox::Warning, tr("Program Schedule"),
                    tr("Add at least one valid base clip."));
        return;
    }
    const arrangement::Validation loaded = m_engine->loadSchedule(a);
    if (!loaded.ok) {
        showMessage(QMessageBox::Warning, loaded.title, loaded.message);
        return;
    }
    QString error;
    if (!m_engine->startSchedule(&error))
        showMessage(QMessageBox::Warning, tr("Program Schedule"), error);
}

void ScheduleWindow::onRunningChanged(bool running)
{
    m_running = running;
    if (running)
        showRunningArrangement();
    else
        m_timeline->setPlayhead(-1);
    retranslateUi();
    updatePolling();
}

void ScheduleWindow::showRunningArrangement()
{
    // A schedule started from these rows is already shown; one started elsewhere replaces them.
    const ProgramArrangement running = m_engine->schedule();
    if (!running.sceneClips.isEmpty() && running != arrangement())
        loadArrangement(running);
}

void ScheduleWindow::updatePolling()
{
    if (m_running && isVisible()) {
        if (!m_poll->isActive()) {
            m_poll->start();
            pollPlayhead();
        }
    } else {
        m_poll->stop();
    }
}

void ScheduleWindow::pollPlayhead()
{
    const EngineStats stats = m_engine->stats();
    m_timeline->setPlayhead(stats.scheduleRunning ? stats.scheduleMs : -1);
}

void ScheduleWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_running = m_engine->isScheduleRunning();
    if (m_running)
        showRunningArrangement();
    retranslateUi();
    updatePolling();
}

void ScheduleWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    updatePolling();
}

// ---- texts ----

void ScheduleWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        retranslateUi();
        refreshTables();
    }
    QWidget::changeEvent(event);
}

void ScheduleWindow::retranslateUi()
{
    setWindowTitle(tr("Program Schedule"));
    setAccessibleName(tr("Program Schedule"));
    m_originLabel->setText(tr("Timeline origin:"));
    m_origin->setAccessibleName(tr("Timeline origin"));
    m_origin->setToolTip(tr("Clip times are measured from this date and time."));
    m_baseTitle->setText(tr("<b>Base Clips</b>"));
    m_baseTable->setAccessibleName(tr("Base clips"));
    m_baseModel->retranslate();
    m_overlayTitle->setText(tr("<b>Overlay Clips</b>"));
    m_overlayTable->setAccessibleName(tr("Overlay clips"));
    m_overlayModel->retranslate();

    const auto name = [](QPushButton *button, const QString &text, const QString &accessible) {
        button->setText(text);
        button->setAccessibleName(accessible);
    };
    name(m_addBase, tr("Add..."), tr("Add Base Clip"));
    name(m_editBase, tr("Edit..."), tr("Edit Base Clip"));
    name(m_removeBase, tr("Remove"), tr("Remove Base Clip"));
    name(m_upBase, tr("Move Up"), tr("Move Base Clip Up"));
    name(m_downBase, tr("Move Down"), tr("Move Base Clip Down"));
    name(m_clearBase, tr("Clear"), tr("Clear Base Clips"));
    name(m_addOverlay, tr("Add..."), tr("Add Overlay Clip"));
    name(m_editOverlay, tr("Edit..."), tr("Edit Overlay Clip"));
    name(m_removeOverlay, tr("Remove"), tr("Remove Overlay Clip"));
    name(m_upOverlay, tr("Move Up"), tr("Move Overlay Clip Up"));
    name(m_downOverlay, tr("Move Down"), tr("Move Overlay Clip Down"));
    name(m_clearOverlay, tr("Clear"), tr("Clear Overlay Clips"));
    name(m_undoButton, tr("Undo"), tr("Undo Schedule Edit"));
    m_undoButton->setToolTip(m_undoAction->shortcut().toString(QKeySequence::NativeText));
    name(m_redoButton, tr("Redo"), tr("Redo Schedule Edit"));
    m_redoButton->setToolTip(m_redoAction->shortcut().toString(QKeySequence::NativeText));
    name(m_import, tr("Import..."), tr("Import"));
    name(m_export, tr("Export..."), tr("Export"));
    name(m_check, tr("Check"), tr("Check"));
    const QString startStop = m_running ? tr("Stop Schedule") : tr("Start Schedule");
    name(m_startStop, startStop, startStop);

    m_state->setText(m_running ? tr("RUNNING") : tr("READY"));
    m_state->setAccessibleName(tr("Schedule state"));
    m_state->setStyleSheet(m_running ? QStringLiteral("QLabel { background: #c62828; color: white; "
                                                      "font-weight: bold; padding: 3px 10px; "
                                                      "border-radius: 3px; }")
                                     : QStringLiteral("QLabel { background: #6b6b6b; color: white; "
                                                      "padding: 3px 10px; border-radius: 3px; }"));
    m_summary->setAccessibleName(tr("Clip count"));
}

} // namespace selvane
