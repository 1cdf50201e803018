#include "panels/ScheduleWindow.h"
#include "engine/ScheduleFiles.h"

#include "engine/Engine.h"
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
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace selvane {

namespace {

constexpr auto kDisplayFormat = "yyyy/MM/dd HH:mm:ss";
constexpr auto kOriginFormat = "yyyy-MM-dd HH:mm:ss";
constexpr int kPollMs = 200;

// Now, to the second: the origin is shown and stored without milliseconds.
QDateTime nowToTheSecond()
{
    QDateTime now = QDateTime::currentDateTime();
    now.setTime(QTime(now.time().hour(), now.time().minute(), now.time().second()));
    return now;
}

QTableWidget *clipTable(QWidget *parent)
{
    auto *table = new QTableWidget(0, 5, parent);
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

int selectedRow(const QTableWidget *table)
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
    m_origin->setDisplayFormat(kDisplayFormat);
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

    m_baseTitle = new QLabel(this);
    m_baseTable = clipTable(this);
    auto *baseButtons =
        buttonRow({&m_addBase, &m_editBase, &m_removeBase, &m_upBase, &m_downBase, &m_clearBase});
    m_overlayTitle = new QLabel(this);
    m_overlayTable = clipTable(this);
    auto *overlayButtons = buttonRow({&m_addOverlay, &m_editOverlay, &m_removeOverlay, &m_upOverlay,
                                      &m_downOverlay, &m_clearOverlay});

    auto *bottom = new QHBoxLayout;
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

    connect(m_origin, &QDateTimeEdit::dateTimeChanged, this, &ScheduleWindow::refreshTimeline);
    connect(m_addBase, &QPushButton::clicked, this, &ScheduleWindow::addBase);
    connect(m_editBase, &QPushButton::clicked, this, &ScheduleWindow::editBase);
    connect(m_removeBase, &QPushButton::clicked, this, [this] { removeRow(false); });
    connect(m_upBase, &QPushButton::clicked, this, [this] { moveRow(false, -1); });
    connect(m_downBase, &QPushButton::clicked, this, [this] { moveRow(false, 1); });
    connect(m_clearBase, &QPushButton::clicked, this, [this] { clearRows(false); });
    connect(m_baseTable, &QTableWidget::cellDoubleClicked, this, &ScheduleWindow::editBase);
    connect(m_addOverlay, &QPushButton::clicked, this, &ScheduleWindow::addOverlay);
    connect(m_editOverlay, &QPushButton::clicked, this, &ScheduleWindow::editOverlay);
    connect(m_removeOverlay, &QPushButton::clicked, this, [this] { removeRow(true); });
    connect(m_upOverlay, &QPushButton::clicked, this, [this] { moveRow(true, -1); });
    connect(m_downOverlay, &QPushButton::clicked, this, [this] { moveRow(true, 1); });
    connect(m_clearOverlay, &QPushButton::clicked, this, [this] { clearRows(true); });
    connect(m_overlayTable, &QTableWidget::cellDoubleClicked, this, &ScheduleWindow::editOverlay);
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

    m_running = m_engine->isScheduleRunning();
    if (m_running)
        showRunningArrangement();
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
    for (const ScheduleBaseRow &row : m_baseRows) {
        SceneClip clip = row.clip;
        clip.startMs = zero.msecsTo(row.start);
        clip.endMs = row.openEnded ? 0 : zero.msecsTo(row.end);
        a.sceneClips.append(clip);
    }
    for (const ScheduleOverlayRow &row : m_overlayRows) {
        OverlayClip clip = row.clip;
        clip.startMs = zero.msecsTo(row.start);
        clip.endMs = row.openEnded ? 0 : zero.msecsTo(row.end);
        a.overlayClips.append(clip);
    }
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
    m_baseRows.clear();
    m_overlayRows.clear();
    for (const SceneClip &c : a.sceneClips)
        m_baseRows.append({c, zero.addMSecs(c.startMs), zero.addMSecs(c.endMs), c.endMs == 0});
    for (const OverlayClip &c : a.overlayClips)
        m_overlayRows.append({c, zero.addMSecs(c.startMs), zero.addMSecs(c.endMs), c.endMs == 0});
    {
        const QSignalBlocker quiet(m_origin);
        m_origin->setDateTime(zero);
    }
    refreshTables();
}

QDateTime ScheduleWindow::nextBaseStart() const
{
    if (m_baseRows.isEmpty())
        return origin();
    const ScheduleBaseRow &last = m_baseRows.last();
    return last.openEnded ? last.start.addSecs(60) : last.end;
}

void ScheduleWindow::addBase()
{
    BaseClipDialog dialog(this);
    ScheduleBaseRow row;
    row.clip.id = freshId(m_baseRows, QStringLiteral("base"));
    row.start = nextBaseStart();
    row.end = row.start.addSecs(60);
    dialog.setRow(row);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_baseRows.append(dialog.row());
    refreshTables();
    selectRow(false, int(m_baseRows.size()) - 1);
}

void ScheduleWindow::editBase()
{
    const int index = selectedRow(m_baseTable);
    if (index < 0)
        return;
    BaseClipDialog dialog(this);
    dialog.setRow(m_baseRows[index]);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_baseRows[index] = dialog.row();
    refreshTables();
    selectRow(false, index);
}

void ScheduleWindow::addOverlay()
{
    OverlayClipDialog dialog(this);
    ScheduleOverlayRow row;
    row.clip.id = freshId(m_overlayRows, QStringLiteral("overlay"));
    row.start = origin();
    row.end = row.start.addSecs(60);
    dialog.setRow(row);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_overlayRows.append(dialog.row());
    refreshTables();
    selectRow(true, int(m_overlayRows.size()) - 1);
}

void ScheduleWindow::editOverlay()
{
    const int index = selectedRow(m_overlayTable);
    if (index < 0)
        return;
    OverlayClipDialog dialog(this);
    dialog.setRow(m_overlayRows[index]);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_overlayRows[index] = dialog.row();
    refreshTables();
    selectRow(true, index);
}

void ScheduleWindow::removeRow(bool overlay)
{
    const int index = selectedRow(overlay ? m_overlayTable : m_baseTable);
    if (index < 0)
        return;
    if (overlay)
        m_overlayRows.removeAt(index);
    else
        m_baseRows.removeAt(index);
    refreshTables();
    const int count = int(overlay ? m_overlayRows.size() : m_baseRows.size());
    if (count > 0)
        selectRow(overlay, std::min(index, count - 1));
}

void ScheduleWindow::moveRow(bool overlay, int delta)
{
    const int index = selectedRow(overlay ? m_overlayTable : m_baseTable);
    const int count = int(overlay ? m_overlayRows.size() : m_baseRows.size());
    const int target = index + delta;
    if (index < 0 || target < 0 || target >= count)
        return;
    if (overlay)
        m_overlayRows.swapItemsAt(index, target);
    else
        m_baseRows.swapItemsAt(index, target);
    refreshTables();
    selectRow(overlay, target);
}

void ScheduleWindow::clearRows(bool overlay)
{
    if ((overlay ? m_overlayRows.isEmpty() : m_baseRows.isEmpty()))
        return;
    const auto answer = overlay ? showMessage(QMessageBox::Question, tr("Clear Overlay Clips"),
                                              tr("Delete all overlay clips?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
                                : showMessage(QMessageBox::Question, tr("Clear Base Clips"),
                                              tr("Delete all base clips?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    if (overlay)
        m_overlayRows.clear();
    else
        m_baseRows.clear();
    refreshTables();
}

void ScheduleWindow::selectRow(bool overlay, int row)
{
    QTableWidget *table = overlay ? m_overlayTable : m_baseTable;
    QTableWidget *other = overlay ? m_baseTable : m_overlayTable;
    if (row < 0 || row >= table->rowCount())
        return;
    other->clearSelection();
    table->selectRow(row);
    table->scrollToItem(table->item(row, 0));
    m_timeline->setSelection(overlay, row);
}

// ---- what the tables show ----

QString ScheduleWindow::baseSource(const SceneClip &clip) const
{
    switch (clip.kind) {
    case SceneClip::ImagePlay:
        return tr("Image playback");
    case SceneClip::SceneVideo:
        return tr("Video");
    default:
        return tr("Channel %1").arg(clip.channel + 1);
    }
}

QString ScheduleWindow::baseDetails(const SceneClip &clip) const
{
    switch (clip.kind) {
    case SceneClip::ImagePlay:
        return tr("%1 (%2 images, %3 ms each%4)")
            .arg(QDir::toNativeSeparators(clip.imageDirectory))
            .arg(clip.paths.size())
            .arg(clip.intervalMs)
            .arg(clip.imageLoop ? tr(", looping") : QString());
    case SceneClip::SceneVideo:
        return QDir::toNativeSeparators(clip.sceneVideoPath) +
               (clip.sceneVideoLoop ? tr(" (looping)") : QString());
    default:
        return QString();
    }
}

QString ScheduleWindow::overlayKind(const OverlayClip &clip) const
{
    switch (clip.kind) {
    case OverlayClip::Text:
        return tr("Text");
    case OverlayClip::Video:
        return tr("Video");
    default:
        return tr("Image");
    }
}

QString ScheduleWindow::overlayDetails(const OverlayClip &clip) const
{
    if (clip.kind == OverlayClip::Text)
        return QStringLiteral("\"%1\"").arg(clip.textData.text);
    return tr("%1 at %2, %3 size %4 x %5, opacity %6")
        .arg(QDir::toNativeSeparators(clip.path))
        .arg(clip.x, 0, 'f', 2)
        .arg(clip.y, 0, 'f', 2)
        .arg(clip.w, 0, 'f', 2)
        .arg(clip.h, 0, 'f', 2)
        .arg(clip.opacity, 0, 'f', 2);
}

void ScheduleWindow::refreshTables()
{
    const auto fill = [](QTableWidget *table, int row, const QStringList &cells) {
        for (int column = 0; column < cells.size(); ++column) {
            auto *item = new QTableWidgetItem(cells[column]);
            item->setToolTip(cells[column]);
            table->setItem(row, column, item);
        }
    };
    const auto times = [](const QDateTime &start, const QDateTime &end, bool open) {
        return QStringList{start.toString(kDisplayFormat),
                           open ? QStringLiteral("∞") : end.toString(kDisplayFormat)};
    };
    const int baseSelected = selectedRow(m_baseTable);
    const int overlaySelected = selectedRow(m_overlayTable);
    {
        const QSignalBlocker quietBase(m_baseTable->selectionModel());
        const QSignalBlocker quietOverlay(m_overlayTable->selectionModel());
        m_baseTable->setRowCount(int(m_baseRows.size()));
        for (int i = 0; i < m_baseRows.size(); ++i) {
            const ScheduleBaseRow &r = m_baseRows[i];
            fill(m_baseTable, i,
                 QStringList{r.clip.id, baseSource(r.clip)} + times(r.start, r.end, r.openEnded) +
                     QStringList{baseDetails(r.clip)});
        }
        m_overlayTable->setRowCount(int(m_overlayRows.size()));
        for (int i = 0; i < m_overlayRows.size(); ++i) {
            const ScheduleOverlayRow &r = m_overlayRows[i];
            fill(m_overlayTable, i,
                 QStringList{r.clip.id, overlayKind(r.clip)} + times(r.start, r.end, r.openEnded) +
                     QStringList{overlayDetails(r.clip)});
        }
    }
    for (QTableWidget *table : {m_baseTable, m_overlayTable})
        for (int column = 0; column < 4; ++column)
            table->resizeColumnToContents(column);
    if (baseSelected >= m_baseTable->rowCount())
        m_baseTable->clearSelection();
    if (overlaySelected >= m_overlayTable->rowCount())
        m_overlayTable->clearSelection();
    m_summary->setText(
        tr("Base %1  |  Overlay %2").arg(m_baseRows.size()).arg(m_overlayRows.size()));
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
    m_baseTable->setHorizontalHeaderLabels(
        {tr("ID"), tr("Source"), tr("Start"), tr("End"), tr("Details")});
    m_overlayTitle->setText(tr("<b>Overlay Clips</b>"));
    m_overlayTable->setAccessibleName(tr("Overlay clips"));
    m_overlayTable->setHorizontalHeaderLabels(
        {tr("ID"), tr("Kind"), tr("Start"), tr("End"), tr("Details")});

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
    m_summary->setText(
        tr("Base %1  |  Overlay %2").arg(m_baseRows.size()).arg(m_overlayRows.size()));
}

} // namespace selvane
