#include "panels/OutputSettingsPanel.h"

#include "engine/Engine.h"
#include "engine/OutputRules.h"
#include "media/StoredSettings.h"
#include "output/EncodeProfiles.h"
#include "panels/EncodeProfilesBox.h"
#include "panels/OutputFolder.h"
#include "panels/OutputStatusView.h"
#include "panels/RecordingProfileBox.h"
#include "panels/StreamTargetModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QTableView>
#include <QVBoxLayout>

namespace selvane {

namespace {

struct Resolution
{
    const char *name;
    int width;
    int height;
};
// The first entry is "Same as Program".
const Resolution kResolutions[] = {
    {"", 0, 0},         {"720p", 1280, 720}, {"1080p", 1920, 1080}, {"1440p", 2560, 1440},
    {"4K", 3840, 2160}, {"8K", 7680, 4320}};
const char *const kContainers[] = {"mp4", "mkv", "mov", "ts"};
const char *const kDefaultPattern = "output_{date}_{time}.mp4";

QLabel *hint(QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setWordWrap(true);
    label->setStyleSheet("color:#9aa0aa;font-size:11px;");
    return label;
}

} // namespace

void OutputSettingsPanel::addSection(QWidget *section)
{
    m_sections->insertWidget(m_sections->count() - 1, section); // above the stretch
}

QString OutputSettingsPanel::expandPattern(const QString &pattern)
{
    const QDateTime now = QDateTime::currentDateTime();
    QString path = pattern;
    path.replace("{date}", now.toString("yyyyMMdd"));
    path.replace("{time}", now.toString("HHmmss"));
    return path;
}

OutputSettingsPanel::OutputSettingsPanel(QWidget *parent) : QWidget(parent)
{
    setObjectName("outputSettingsPanel");
    // Recording
    m_recordingTitle = new QLabel(this);
    m_record = new QCheckBox(this);
    m_file = new QLineEdit(this);
    m_file->setAccessibleName("Recording file");
    m_browse = new QPushButton(this);
    m_containerLabel = new QLabel(this);
    m_container = new QComboBox(this);
    for (const char *container : kContainers)
        m_container->addItem(QString::fromLatin1(container).toUpper(),
                             QString::fromLatin1(container));
    m_segment = new QCheckBox(this);
    m_segmentMinutes = new QSpinBox(this);
    m_segmentMinutes->setRange(1, 1440);
    m_segmentGiB = new QDoubleSpinBox(this);
    m_segmentGiB->setRange(0.1, 1024);
    m_segmentGiB->setDecimals(1);
    m_segmentHint = hint(this);
    m_twinLabel = new QLabel(this);
    m_twin = new QLineEdit(this);
    m_keepFreeLabel = new QLabel(this);
    m_keepFree = new QSpinBox(this);
    m_keepFree->setRange(0, 10'000'000);
    m_keepFree->setSingleStep(1024);
    m_recordingProfile = new RecordingProfileBox(this);
    m_recordingState = new QLabel(this);
    m_recordingState->setObjectName("recordingState");
    m_recordingState->setWordWrap(true);

    // Targets
    m_targetsTitle = new QLabel(this);
    m_sharedHint = hint(this);
    m_targetModel = new StreamTargetModel(this);
    m_targetTable = new QTableView(this);
    m_targetTable->setModel(m_targetModel);
    m_targetTable->setAccessibleName("Stream targets");
    m_targetTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_targetTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_targetTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_targetTable->verticalHeader()->hide();
    m_targetTable->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    m_targetTable->setMinimumHeight(110);
    m_addTarget = new QPushButton(this);
    m_addTarget->setAccessibleName("Add Target");
    m_editTarget = new QPushButton(this);
    m_removeTarget = new QPushButton(this);
    m_removeTarget->setAccessibleName("Remove Target");

    // Format
    m_formatTitle = new QLabel(this);
    m_resolutionLabel = new QLabel(this);
    m_resolution = new QComboBox(this);
    for (const Resolution &r : kResolutions)
        m_resolution->addItem(QString(), QSize(r.width, r.height));
    m_fpsLabel = new QLabel(this);
    m_fps = new QComboBox(this);
    m_fps->addItem("30 fps", 30.0);
    m_fps->addItem("60 fps", 60.0);
    m_bitrateLabel = new QLabel(this);
    m_bitrate = new QSpinBox(this);
    m_bitrate->setRange(300, 200000);
    m_bitrate->setSingleStep(500);
    m_bitrate->setSuffix(" kbit/s");
    m_bitrateAuto = new QCheckBox(this);
    m_encoderLabel = new QLabel(this);
    m_encoder = new QComboBox(this);
    m_encoder->addItems({QString(), QString(), QString()});
    m_presetLabel = new QLabel(this);
    m_preset = new QComboBox(this);
    m_preset->addItems({QString(), QString(), QString()});
    m_keyframeLabel = new QLabel(this);
    m_keyframe = new QSpinBox(this);
    m_keyframe->setRange(1, 10);
    m_keyframe->setSuffix(" s");
    m_gainLabel = new QLabel(this);
    m_gain = new QSpinBox(this);
    m_gain->setRange(0, 400);
    m_gain->setSuffix(" %");
    m_gainHint = hint(this);
    m_lockHint = hint(this);
    m_eightKHint = new QLabel(this);
    m_eightKHint->setStyleSheet("color:#ff9f43;");
    m_eightKHint->setWordWrap(true);
    m_eightKHint->hide();
    m_profiles = new EncodeProfilesBox(this);

    m_start = new QPushButton(this);
    m_start->setAccessibleName("Start Outputs");
    m_start->setObjectName("startOutputs");
    m_stop = new QPushButton(this);
    m_stop->setAccessibleName("Stop Outputs");
    m_stop->setObjectName("stopOutputs");
    m_stop->setEnabled(false);

    // The panel must fit a narrow dock: lists show what fits, not their longest entry.
    for (QComboBox *box : findChildren<QComboBox *>()) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(6);
    }
    m_file->setMinimumWidth(80);

    auto *fileRow = new QHBoxLayout;
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(m_browse);
    auto *segmentRow = new QHBoxLayout;
    segmentRow->addWidget(m_segment);
    segmentRow->addWidget(m_segmentMinutes);
    segmentRow->addWidget(m_segmentGiB);
    auto *targetButtons = new QHBoxLayout;
    targetButtons->addWidget(m_addTarget);
    targetButtons->addWidget(m_editTarget);
    targetButtons->addWidget(m_removeTarget);
    auto *bitrateRow = new QHBoxLayout;
    bitrateRow->addWidget(m_bitrate, 1);
    bitrateRow->addWidget(m_bitrateAuto);
    auto *format = new QFormLayout;
    format->addRow(m_resolutionLabel, m_resolution);
    format->addRow(m_fpsLabel, m_fps);
    format->addRow(m_bitrateLabel, bitrateRow);
    format->addRow(m_encoderLabel, m_encoder);
    format->addRow(m_presetLabel, m_preset);
    format->addRow(m_keyframeLabel, m_keyframe);
    format->addRow(m_gainLabel, m_gain);
    auto *startRow = new QHBoxLayout;
    startRow->addWidget(m_start);
    startRow->addWidget(m_stop);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(startRow);
    layout->addWidget(m_recordingTitle);
    layout->addWidget(m_record);
    layout->addLayout(fileRow);
    auto *containerRow = new QHBoxLayout;
    containerRow->addWidget(m_containerLabel);
    containerRow->addWidget(m_container, 1);
    layout->addLayout(containerRow);
    layout->addLayout(segmentRow);
    layout->addWidget(m_segmentHint);
    auto *copies = new QFormLayout;
    copies->addRow(m_keepFreeLabel, m_keepFree);
    copies->addRow(m_twinLabel, m_twin);
    layout->addLayout(copies);
    layout->addWidget(m_recordingProfile);
    layout->addWidget(m_recordingState);
    layout->addWidget(m_targetsTitle);
    layout->addWidget(m_targetTable);
    layout->addLayout(targetButtons);
    layout->addWidget(m_sharedHint);
    layout->addWidget(m_formatTitle);
    layout->addLayout(format);
    layout->addWidget(m_eightKHint);
    layout->addWidget(m_gainHint);
    layout->addWidget(m_lockHint);
    layout->addWidget(m_profiles);
    layout->addStretch(1);
    m_sections = layout;

    load();
    retranslateUi();

    auto changed = [this] {
        if (m_loading)
            return;
        applyEightKRules();
        save();
        emit settingsChanged();
    };
    for (QCheckBox *box : {m_record, m_segment, m_bitrateAuto})
        connect(box, &QCheckBox::toggled, this, changed);
    connect(m_file, &QLineEdit::editingFinished, this, changed);
    connect(m_file, &QLineEdit::textChanged, this, changed);
    for (QComboBox *combo : {m_resolution, m_fps, m_encoder, m_preset})
        connect(combo, &QComboBox::currentIndexChanged, this, changed);
    connect(m_container, &QComboBox::activated, this, [this, changed] {
        // The container is the file name's extension.
        const QFileInfo info(m_file->text());
        const QString name = info.completeBaseName().isEmpty() ? QString("output_{date}_{time}")
                                                               : info.completeBaseName();
        m_file->setText(
            QDir(info.path()).filePath(name + "." + m_container->currentData().toString()));
        changed();
    });
    for (QSpinBox *spin : {m_segmentMinutes, m_bitrate, m_keyframe, m_keepFree})
        connect(spin, &QSpinBox::valueChanged, this, changed);
    connect(m_twin, &QLineEdit::editingFinished, this, changed);
    connect(m_segmentGiB, &QDoubleSpinBox::valueChanged, this, changed);
    connect(m_gain, &QSpinBox::valueChanged, this, [this, changed](int percent) {
        emit programGainChanged(float(percent) / 100.0f);
        changed();
    });
    connect(m_bitrateAuto, &QCheckBox::toggled, m_bitrate, &QWidget::setDisabled);
    connect(m_browse, &QPushButton::clicked, this, &OutputSettingsPanel::browseFolder);
    connect(m_addTarget, &QPushButton::clicked, this, [this] { editTarget(-1); });
    connect(m_editTarget, &QPushButton::clicked, this,
            [this] { editTarget(m_targetTable->currentIndex().row()); });
    connect(m_targetTable, &QTableView::doubleClicked, this, [this](const QModelIndex &index) {
        if (index.column() != StreamTargetModel::OnColumn)
            editTarget(index.row());
    });
    connect(m_removeTarget, &QPushButton::clicked, this,
            [this] { m_targetModel->removeTarget(m_targetTable->currentIndex().row()); });
    // Every change the operator makes to the list is stored at once.
    connect(m_targetModel, &StreamTargetModel::targetsEdited, this, [this] {
        saveTargets();
        emit settingsChanged();
    });
    // The profiles named anywhere are the ones the box holds; the program's rate bounds theirs.
    const auto profilesEdited = [this] {
        m_recordingProfile->setProfileNames(m_profiles->names());
        m_targetModel->setProfileNames(m_profiles->names());
        m_profiles->setProgramFps(m_fps->currentData().toDouble());
    };
    profilesEdited();
    connect(m_profiles, &EncodeProfilesBox::changed, this, [this, profilesEdited] {
        profilesEdited();
        showTargets();
        emit settingsChanged();
    });
    connect(m_fps, &QComboBox::currentIndexChanged, this, profilesEdited);
    // A renamed profile stays the one its targets and recordings take.
    connect(m_profiles, &EncodeProfilesBox::renamed, this,
            [this](const QString &from, const QString &to) {
                QList<TargetEntry> targets = m_targetModel->targets();
                for (TargetEntry &target : targets)
                    if (target.profile == from)
                        target.profile = to;
                m_targetModel->setTargets(targets);
                saveTargets();
                m_recordingProfile->renameProfile(from, to);
            });
    connect(m_recordingProfile, &RecordingProfileBox::changed, this,
            &OutputSettingsPanel::settingsChanged);
    connect(m_start, &QPushButton::clicked, this, &OutputSettingsPanel::startOutputsRequested);
    connect(m_stop, &QPushButton::clicked, this, &OutputSettingsPanel::stopOutputsRequested);
    applyEightKRules();
}

void OutputSettingsPanel::load()
{
    m_loading = true;
    StoredSettings s;
    m_record->setChecked(s.value("output/fileEnabled", true).toBool());
    m_file->setText(
        s.value("output/filePath", QDir(defaultOutputDirectory()).filePath(kDefaultPattern))
            .toString());
    const int container = m_container->findData(QFileInfo(m_file->text()).suffix().toLower());
    m_container->setCurrentIndex(qMax(0, container));
    m_segment->setChecked(s.value("output/segmentEnabled", false).toBool());
    m_segmentMinutes->setValue(s.value("output/segmentMinutes", 60).toInt());
    m_segmentGiB->setValue(s.value("output/segmentGiB", 4.0).toDouble());
    m_twin->setText(s.value("output/twinFolder").toString());
    m_keepFree->setValue(s.value("output/keepFreeMiB", 0).toInt());
    m_resolution->setCurrentIndex(
        qBound(0, s.value("output/resolution", 0).toInt(), m_resolution->count() - 1));
    m_fps->setCurrentIndex(s.value("output/fps", 30.0).toDouble() >= 59.0 ? 1 : 0);
    m_bitrateAuto->setChecked(s.value("output/bitrateFollowsPreset", true).toBool());
    m_bitrate->setValue(qMax(300, s.value("output/bitrateKbps", 6000).toInt()));
    m_bitrate->setDisabled(m_bitrateAuto->isChecked());
    m_encoder->setCurrentIndex(qBound(0, s.value("output/encoderMode", 0).toInt(), 2));
    m_preset->setCurrentIndex(qBound(0, s.value("output/qualityPreset", 1).toInt(), 2));
    m_keyframe->setValue(s.value("output/keyframeSeconds", 2).toInt());
    m_gain->setValue(s.value("output/gainPercent", 100).toInt());
    QList<TargetEntry> targets;
    s.beginGroup("output/streams");
    const QStringList groups = s.childGroups();
    QList<int> order;
    for (const QString &g : groups)
        order << g.toInt();
    std::sort(order.begin(), order.end());
    for (int index : order) {
        s.beginGroup(QString::number(index));
        TargetEntry target{s.value("protocol", "Custom").toString(),
                           s.value("enabled", true).toBool(), s.value("url").toString(),
                           s.value("key").toString()};
        target.profile = s.value("profile").toString();
        target.hlsSegmentSeconds = s.value("hlsSegmentSeconds", 2).toInt();
        target.hlsWindow = s.value("hlsWindow", 6).toInt();
        targets << target;
        s.endGroup();
    }
    s.endGroup();
    m_loading = false;
    m_targetModel->setTargets(targets);
    showTargets();
}

void OutputSettingsPanel::save()
{
    StoredSettings s;
    s.setValue("output/fileEnabled", m_record->isChecked());
    s.setValue("output/filePath", m_file->text().trimmed());
    s.setValue("output/segmentEnabled", m_segment->isChecked());
    s.setValue("output/segmentMinutes", m_segmentMinutes->value());
    s.setValue("output/segmentGiB", m_segmentGiB->value());
    s.setValue("output/twinFolder", m_twin->text().trimmed());
    s.setValue("output/keepFreeMiB", m_keepFree->value());
    s.setValue("output/resolution", m_resolution->currentIndex());
    s.setValue("output/gainPercent", m_gain->value());
    s.setValue("output/bitrateKbps", m_bitrateAuto->isChecked() ? 0 : m_bitrate->value());
    s.setValue("output/bitrateFollowsPreset", m_bitrateAuto->isChecked());
    s.setValue("output/fps", m_fps->currentData().toDouble());
    s.setValue("output/keyframeSeconds", m_keyframe->value());
    s.setValue("output/encoderMode", m_encoder->currentIndex());
    s.setValue("output/qualityPreset", m_preset->currentIndex());
}

void OutputSettingsPanel::saveTargets()
{
    StoredSettings s;
    s.remove("output/streams");
    const QList<TargetEntry> &targets = m_targetModel->targets();
    for (int i = 0; i < targets.size(); ++i) {
        const QString group = QStringLiteral("output/streams/%1/").arg(i);
        s.setValue(group + "protocol", targets[i].kind);
        s.setValue(group + "enabled", targets[i].enabled);
        s.setValue(group + "url", targets[i].server);
        s.setValue(group + "key", targets[i].key);
        s.setValue(group + "profile", targets[i].profile);
        s.setValue(group + "hlsSegmentSeconds", targets[i].hlsSegmentSeconds);
        s.setValue(group + "hlsWindow", targets[i].hlsWindow);
    }
}

void OutputSettingsPanel::showTargets()
{
    m_targetTable->resizeColumnToContents(StreamTargetModel::OnColumn);
    m_targetTable->resizeColumnToContents(StreamTargetModel::KindColumn);
    m_targetTable->resizeColumnToContents(StreamTargetModel::ProfileColumn);
}

QList<OutputSettingsPanel::TargetEntry> OutputSettingsPanel::targets() const
{
    return m_targetModel->targets();
}

void OutputSettingsPanel::setTargets(const QList<TargetEntry> &targets)
{
    m_targetModel->setTargets(targets);
    saveTargets();
    showTargets();
    emit settingsChanged();
}

void OutputSettingsPanel::setProfiles(const QList<EncodeProfile> &profiles)
{
    m_profiles->setProfiles(profiles);
    m_recordingProfile->setProfileNames(m_profiles->names());
    m_targetModel->setProfileNames(m_profiles->names());
    emit settingsChanged();
}

void OutputSettingsPanel::setRecording(bool enabled, const QString &path)
{
    m_record->setChecked(enabled);
    if (!path.isEmpty() || !enabled)
        m_file->setText(path);
    save();
}

void OutputSettingsPanel::editTarget(int row)
{
    const QList<TargetEntry> &targets = m_targetModel->targets();
    const bool adding = row < 0 || row >= targets.size();
    StreamTargetDialog dialog(this, adding ? TargetEntry{"RTMP", true, {}, {}} : targets[row],
                              m_profiles->names());
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (adding)
        m_targetModel->addTarget(dialog.entry());
    else
        m_targetModel->replaceTarget(row, dialog.entry());
    showTargets();
}

void OutputSettingsPanel::browseFolder()
{
    const QFileInfo current(m_file->text());
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Recording folder"), current.path());
    if (folder.isEmpty())
        return;
    const QString name =
        current.fileName().isEmpty() ? QString(kDefaultPattern) : current.fileName();
    m_file->setText(QDir(folder).filePath(name));
}

QSize OutputSettingsPanel::chosenSize() const
{
    return m_resolution->currentData().toSize();
}

void OutputSettingsPanel::applyEightKRules()
{
    // The engine's rules, shown where the operator chooses: the choices it forces are made here
    // too, so that the panel shows what will run.
    const OutputSettings chosen = settings();
    const OutputRules::EightKRules rules = OutputRules::eightKRules(chosen, {});
    QStringList hints;
    if (rules.eightK) {
        if (rules.hardwareForced)
            m_encoder->setCurrentIndex(EncoderSettings::Hardware);
        hints << tr("8K requires hardware HEVC encoding");
        if (chosen.encoder.fps >= 59.0) {
            if (rules.performanceForced)
                m_preset->setCurrentIndex(EncoderSettings::Performance);
            hints << tr("8K60 uses the Performance preset to maintain real-time output");
        }
    }
    m_eightKHint->setText(hints.join("\n"));
    m_eightKHint->setVisible(!hints.isEmpty());
}

OutputSettings OutputSettingsPanel::settings() const
{
    OutputSettings out;
    EncoderSettings &e = out.encoder;
    e.fileEnabled = m_record->isChecked() && !m_file->text().trimmed().isEmpty();
    e.filePath = e.fileEnabled ? expandPattern(m_file->text().trimmed()) : QString();
    e.segmentEnabled = e.fileEnabled && m_segment->isChecked();
    e.segmentMinutes = e.segmentEnabled ? m_segmentMinutes->value() : 0;
    e.segmentGiB = e.segmentEnabled ? m_segmentGiB->value() : 0;
    e.keepFreeMiB = e.segmentEnabled ? m_keepFree->value() : 0;
    if (e.fileEnabled && !m_twin->text().trimmed().isEmpty())
        e.twinFilePath = QDir(m_twin->text().trimmed()).filePath(QFileInfo(e.filePath).fileName());
    for (const TargetEntry &t : m_targetModel->targets())
        if (t.enabled && !t.server.trimmed().isEmpty())
            e.streamTargets << t.target();
    e.fps = m_fps->currentData().toDouble();
    e.bitrateKbps = m_bitrateAuto->isChecked() ? 0 : m_bitrate->value();
    e.keyframeSeconds = m_keyframe->value();
    e.encoderMode = m_encoder->currentIndex();
    e.qualityPreset = m_preset->currentIndex();
    e.adaptiveBitrate = m_profiles->adaptiveBitrate();
    e.adaptiveFloorPercent = m_profiles->adaptiveFloorPercent();
    // Every profile takes the encoder and the keyframe interval chosen for the encoding.
    for (EncodeProfile profile : m_profiles->profiles()) {
        profile.encoderMode = e.encoderMode;
        profile.keyframeSeconds = e.keyframeSeconds;
        e.profiles << profile;
    }
    const QString fileProfile = m_recordingProfile->fileProfile();
    e.fileProfile = profiles::isDefault(fileProfile) ? QString() : fileProfile;
    for (IsoRecording iso : m_recordingProfile->isoRecordings()) {
        if (profiles::isDefault(iso.profile))
            iso.profile.clear();
        e.isoRecordings << iso;
    }
    const QSize size = chosenSize();
    out.size = {size.isValid() && !size.isEmpty(), size.isEmpty() ? QSize() : size};
    return out;
}

int OutputSettingsPanel::gainPercent() const
{
    return m_gain->value();
}

void OutputSettingsPanel::setOutputsRunning(bool running)
{
    m_running = running;
    m_start->setEnabled(!running);
    m_stop->setEnabled(running);
    // The format cannot change under a running encoder.
    for (QWidget *w : std::initializer_list<QWidget *>{
             m_resolution, m_fps, m_bitrate, m_bitrateAuto, m_encoder, m_preset, m_keyframe,
             m_record, m_file, m_browse, m_container, m_segment, m_segmentMinutes, m_segmentGiB,
             m_twin, m_keepFree, m_addTarget, m_editTarget, m_removeTarget})
        w->setEnabled(!running);
    m_profiles->setRunning(running);
    m_recordingProfile->setRunning(running);
    if (!running)
        m_bitrate->setDisabled(m_bitrateAuto->isChecked());
    m_lockHint->setVisible(running);
}

void OutputSettingsPanel::setTargetStatus(int index, const QString &status)
{
    m_targetModel->setStatus(index, status);
}

void OutputSettingsPanel::showStats(const OutputStats &stats)
{
    for (int i = 0; i < stats.targets.size(); ++i)
        setTargetStatus(i, stats.targets[i].status);
    QString text;
    QString colour = "#9aa0aa";
    if (stats.running && stats.recording) {
        const qint64 s = stats.elapsedMs / 1000;
        const QString elapsed = QStringLiteral("%1:%2:%3")
                                    .arg(s / 3600, 2, 10, QLatin1Char('0'))
                                    .arg(s / 60 % 60, 2, 10, QLatin1Char('0'))
                                    .arg(s % 60, 2, 10, QLatin1Char('0'));
        if (stats.file.failed) {
            text = tr("failed: %1").arg(stats.file.failureReason);
            colour = "#ff5a5a";
        } else {
            text = tr("recording %1  %2  %3 MB")
                       .arg(elapsed, QFileInfo(stats.file.path).fileName())
                       .arg(stats.file.bytes / double(1 << 20), 0, 'f', 1);
            colour = "#55c878";
        }
    } else {
        text = tr("stopped");
    }
    m_recordingState->setText(text);
    m_recordingState->setStyleSheet(QStringLiteral("color:%1;").arg(colour));
}

void OutputSettingsPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void OutputSettingsPanel::retranslateUi()
{
    const bool loading = m_loading;
    m_loading = true;
    m_recordingTitle->setText(tr("<b>Recording</b>"));
    m_record->setText(tr("Record to file"));
    m_record->setAccessibleName(tr("Record to file"));
    m_file->setToolTip(tr("Folder and file name; {date} and {time} become the start time"));
    m_browse->setText(tr("Browse…"));
    m_browse->setAccessibleName(tr("Choose the recording folder"));
    m_containerLabel->setText(tr("Container:"));
    m_container->setAccessibleName(tr("Container"));
    m_segment->setText(tr("Segment recording"));
    m_segment->setAccessibleName(tr("Segment recording"));
    m_segmentMinutes->setSuffix(tr(" min"));
    m_segmentMinutes->setAccessibleName(tr("Segment minutes"));
    m_segmentGiB->setSuffix(tr(" GiB"));
    m_segmentGiB->setAccessibleName(tr("Segment size"));
    m_segmentHint->setText(tr("Start a new file at a keyframe when either limit is reached"));
    m_keepFreeLabel->setText(tr("Keep free:"));
    m_keepFree->setSuffix(tr(" MiB"));
    m_keepFree->setSpecialValueText(tr("off"));
    m_keepFree->setAccessibleName(tr("Keep free"));
    m_keepFree->setToolTip(tr("Ring recording: with segments, this take's oldest segments are "
                              "deleted while the disk has less free"));
    m_twinLabel->setText(tr("Twin copy in:"));
    m_twin->setPlaceholderText(tr("a folder on another disk (empty: none)"));
    m_twin->setAccessibleName(tr("Twin folder"));
    m_recordingState->setAccessibleName(tr("Recording state"));
    m_targetsTitle->setText(tr("<b>Stream targets</b>"));
    m_sharedHint->setText(tr("Destinations on the same encode profile share one encoder to "
                             "minimize CPU/GPU load."));
    m_targetModel->retranslate();
    m_addTarget->setText(tr("Add"));
    m_editTarget->setText(tr("Edit"));
    m_editTarget->setAccessibleName(tr("Edit Target"));
    m_removeTarget->setText(tr("Remove"));
    m_formatTitle->setText(tr("<b>Encoding</b>"));
    m_resolutionLabel->setText(tr("Resolution:"));
    m_resolution->setItemText(0, tr("Same as Program"));
    for (int i = 1; i < m_resolution->count(); ++i)
        m_resolution->setItemText(i, tr("%1 (%2 x %3)")
                                         .arg(QString::fromLatin1(kResolutions[i].name))
                                         .arg(kResolutions[i].width)
                                         .arg(kResolutions[i].height));
    m_resolution->setToolTip(
        tr("Recording/stream output resolution; 'Same as Program' follows current canvas size."));
    m_resolution->setAccessibleName(tr("Output resolution"));
    m_fpsLabel->setText(tr("Frame rate:"));
    m_fps->setAccessibleName(tr("Frame rate"));
    m_bitrateLabel->setText(tr("Bitrate:"));
    m_bitrate->setAccessibleName(tr("Video bitrate"));
    m_bitrateAuto->setText(tr("Automatic"));
    m_bitrateAuto->setToolTip(tr("The bitrate follows the preset and the picture size"));
    m_bitrateAuto->setAccessibleName(tr("Automatic bitrate"));
    m_encoderLabel->setText(tr("Encoder:"));
    m_encoder->setItemText(0, tr("Auto"));
    m_encoder->setItemText(1, tr("Hardware"));
    m_encoder->setItemText(2, tr("Software"));
    m_encoder->setAccessibleName(tr("Encoder mode"));
    m_presetLabel->setText(tr("Preset:"));
    m_preset->setItemText(0, tr("Performance"));
    m_preset->setItemText(1, tr("Balanced"));
    m_preset->setItemText(2, tr("Quality"));
    m_preset->setAccessibleName(tr("Quality preset"));
    m_keyframeLabel->setText(tr("Keyframe interval:"));
    m_keyframe->setAccessibleName(tr("Keyframe interval"));
    m_gainLabel->setText(tr("Output Gain:"));
    m_gain->setAccessibleName(tr("Output Gain"));
    m_gainHint->setText(tr("Adjusts the program gain for recording and streaming only. It does "
                           "not affect channel mixing or monitoring."));
    m_lockHint->setText(tr("Recording and streaming use the effective canvas resolution. The "
                           "resolution is locked while output is active."));
    m_lockHint->setVisible(m_running);
    m_start->setText(tr("Start Outputs"));
    m_stop->setText(tr("Stop Outputs"));
    applyEightKRules();
    showTargets();
    m_loading = loading;
}

} // namespace selvane
