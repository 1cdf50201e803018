#include "panels/ClipDialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace selvane {

namespace {

constexpr auto kDateTimeFormat = "yyyy/MM/dd HH:mm:ss";

QDateTimeEdit *dateTimeEdit(QWidget *parent)
{
    auto *edit = new QDateTimeEdit(parent);
    edit->setDisplayFormat(kDateTimeFormat);
    edit->setCalendarPopup(true);
    return edit;
}

// A line edit with a Browse button beside it, as one form row.
QWidget *fileRow(QWidget *parent, QLineEdit **edit, QPushButton **browse)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    *edit = new QLineEdit(row);
    *browse = new QPushButton(row);
    layout->addWidget(*edit, 1);
    layout->addWidget(*browse);
    return row;
}

QDoubleSpinBox *unitSpin(QWidget *parent)
{
    auto *spin = new QDoubleSpinBox(parent);
    spin->setRange(0.0, 1.0);
    spin->setDecimals(3);
    spin->setSingleStep(0.05);
    return spin;
}

} // namespace

// ---- start and end ----

ClipTimesEditor::ClipTimesEditor(QFormLayout *form, QWidget *parent) : QObject(parent)
{
    m_startLabel = new QLabel(parent);
    m_start = dateTimeEdit(parent);
    form->addRow(m_startLabel, m_start);

    auto *endRow = new QWidget(parent);
    auto *endLayout = new QHBoxLayout(endRow);
    endLayout->setContentsMargins(0, 0, 0, 0);
    m_end = dateTimeEdit(endRow);
    m_open = new QCheckBox(QStringLiteral("∞"), endRow);
    endLayout->addWidget(m_end, 1);
    endLayout->addWidget(m_open);
    m_endLabel = new QLabel(parent);
    form->addRow(m_endLabel, endRow);
    connect(m_open, &QCheckBox::toggled, m_end, &QWidget::setDisabled);
    retranslate();
}

void ClipTimesEditor::set(const QDateTime &start, const QDateTime &end, bool openEnded)
{
    m_start->setDateTime(start);
    m_end->setDateTime(end.isValid() ? end : start.addSecs(60));
    m_open->setChecked(openEnded);
    m_end->setDisabled(openEnded);
}

QDateTime ClipTimesEditor::start() const
{
    return m_start->dateTime();
}

QDateTime ClipTimesEditor::end() const
{
    return m_end->dateTime();
}

bool ClipTimesEditor::openEnded() const
{
    return m_open->isChecked();
}

void ClipTimesEditor::retranslate()
{
    m_startLabel->setText(tr("Start:"));
    m_endLabel->setText(tr("End:"));
    m_start->setAccessibleName(tr("Start time"));
    m_end->setAccessibleName(tr("End time"));
    m_open->setAccessibleName(tr("Open-ended"));
    m_open->setToolTip(tr("Open-ended: the clip runs until the next one takes over."));
}

// ---- base clip ----

BaseClipDialog::BaseClipDialog(QWidget *parent) : QDialog(parent)
{
    setModal(true);
    m_form = new QFormLayout;
    m_idLabel = new QLabel(this);
    m_id = new QLineEdit(this);
    m_form->addRow(m_idLabel, m_id);
    m_sourceLabel = new QLabel(this);
    m_source = new QComboBox(this);
    for (int i = 0; i < 6; ++i)
        m_source->addItem(QString());
    m_form->addRow(m_sourceLabel, m_source);

    m_directoryLabel = new QLabel(this);
    m_directoryRow = fileRow(this, &m_directory, &m_browseDirectory);
    m_form->addRow(m_directoryLabel, m_directoryRow);
    m_intervalLabel = new QLabel(this);
    m_interval = new QSpinBox(this);
    m_interval->setRange(1, 86400000);
    m_interval->setSingleStep(500);
    m_interval->setSuffix(QStringLiteral(" ms"));
    m_form->addRow(m_intervalLabel, m_interval);
    m_imageLoop = new QCheckBox(this);
    m_form->addRow(QString(), m_imageLoop);

    m_videoLabel = new QLabel(this);
    m_videoRow = fileRow(this, &m_video, &m_browseVideo);
    m_form->addRow(m_videoLabel, m_videoRow);
    m_videoLoop = new QCheckBox(this);
    m_form->addRow(QString(), m_videoLoop);

    m_times = new ClipTimesEditor(m_form, this);

    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    m_cancel = buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    m_ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(m_form);
    layout->addStretch(1);
    layout->addWidget(buttons);

    connect(m_source, &QComboBox::currentIndexChanged, this, &BaseClipDialog::showSourceFields);
    connect(m_browseDirectory, &QPushButton::clicked, this, &BaseClipDialog::browseDirectory);
    connect(m_browseVideo, &QPushButton::clicked, this, &BaseClipDialog::browseVideo);
    retranslateUi();
    setRow(ScheduleBaseRow{});
    setMinimumWidth(460);
}

void BaseClipDialog::setRow(const ScheduleBaseRow &row)
{
    m_row = row;
    const SceneClip &c = row.clip;
    m_id->setText(c.id);
    m_source->setCurrentIndex(c.kind == SceneClip::Channel     ? qBound(0, c.channel, 3)
                              : c.kind == SceneClip::ImagePlay ? 4
                                                               : 5);
    m_directory->setText(c.imageDirectory);
    m_interval->setValue(c.intervalMs);
    m_imageLoop->setChecked(c.imageLoop);
    m_video->setText(c.sceneVideoPath);
    m_videoLoop->setChecked(c.sceneVideoLoop);
    const QDateTime start = row.start.isValid() ? row.start : QDateTime::currentDateTime();
    m_times->set(start, row.end, row.openEnded);
    showSourceFields();
}

ScheduleBaseRow BaseClipDialog::row() const
{
    ScheduleBaseRow row = m_row;
    SceneClip &c = row.clip;
    c.id = m_id->text().trimmed();
    const int source = m_source->currentIndex();
    c.kind = source < 4 ? SceneClip::Channel
                        : (source == 4 ? SceneClip::ImagePlay : SceneClip::SceneVideo);
    c.channel = source < 4 ? source : 0;
    c.intervalMs = m_interval->value();
    c.imageLoop = m_imageLoop->isChecked();
    c.sceneVideoPath = m_video->text().trimmed();
    c.sceneVideoLoop = m_videoLoop->isChecked();
    const QString directory = m_directory->text().trimmed();
    // The slides are the folder's pictures; a list read with the clip stays while its folder
    // stays the same.
    if (c.kind != SceneClip::ImagePlay) {
        c.paths.clear();
    } else if (directory != m_row.clip.imageDirectory || c.paths.isEmpty()) {
        c.paths = directory.isEmpty() ? QStringList() : arrangement::imagesInDirectory(directory);
    }
    c.imageDirectory = directory;
    row.start = m_times->start();
    row.end = m_times->end();
    row.openEnded = m_times->openEnded();
    return row;
}

void BaseClipDialog::showSourceFields()
{
    const int source = m_source->currentIndex();
    const bool images = source == 4;
    const bool video = source == 5;
    m_form->setRowVisible(m_directoryRow, images);
    m_form->setRowVisible(m_interval, images);
    m_form->setRowVisible(m_imageLoop, images);
    m_form->setRowVisible(m_videoRow, video);
    m_form->setRowVisible(m_videoLoop, video);
}

void BaseClipDialog::browseDirectory()
{
    const QString directory = QFileDialog::getExistingDirectory(
        this, tr("Choose the Image Directory"), m_directory->text());
    if (!directory.isEmpty())
        m_directory->setText(directory);
}

void BaseClipDialog::browseVideo()
{
    const QString file = QFileDialog::getOpenFileName(
        this, tr("Choose the Video"), m_video->text(),
        tr("Videos (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;All files (*)"));
    if (!file.isEmpty())
        m_video->setText(file);
}

void BaseClipDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QDialog::changeEvent(event);
}

void BaseClipDialog::retranslateUi()
{
    setWindowTitle(tr("Base Clip"));
    m_idLabel->setText(tr("ID:"));
    m_id->setAccessibleName(tr("Clip ID"));
    m_sourceLabel->setText(tr("Source:"));
    m_source->setAccessibleName(tr("Source"));
    for (int i = 0; i < 4; ++i)
        m_source->setItemText(i, tr("Channel %1").arg(i + 1));
    m_source->setItemText(4, tr("Image playback"));
    m_source->setItemText(5, tr("Video"));
    m_directoryLabel->setText(tr("Image directory:"));
    m_directory->setAccessibleName(tr("Image directory"));
    m_browseDirectory->setText(tr("Browse..."));
    m_browseDirectory->setAccessibleName(tr("Browse for the image directory"));
    m_intervalLabel->setText(tr("Interval:"));
    m_interval->setAccessibleName(tr("Image interval"));
    m_imageLoop->setText(tr("Loop the images"));
    m_imageLoop->setAccessibleName(tr("Loop the images"));
    m_videoLabel->setText(tr("Video file:"));
    m_video->setAccessibleName(tr("Video file"));
    m_browseVideo->setText(tr("Browse..."));
    m_browseVideo->setAccessibleName(tr("Browse for the video"));
    m_videoLoop->setText(tr("Loop the video"));
    m_videoLoop->setAccessibleName(tr("Loop the video"));
    m_times->retranslate();
    m_ok->setText(tr("OK"));
    m_ok->setAccessibleName(tr("OK"));
    m_cancel->setText(tr("Cancel"));
    m_cancel->setAccessibleName(tr("Cancel"));
}

// ---- overlay clip ----

OverlayClipDialog::OverlayClipDialog(QWidget *parent) : QDialog(parent)
{
    setModal(true);
    m_form = new QFormLayout;
    m_idLabel = new QLabel(this);
    m_id = new QLineEdit(this);
    m_form->addRow(m_idLabel, m_id);
    m_kindLabel = new QLabel(this);
    m_kind = new QComboBox(this);
    // Entries in the order Text, Image, Video; the data is the clip's kind.
    m_kind->addItem(QString(), int(OverlayClip::Text));
    m_kind->addItem(QString(), int(OverlayClip::Image));
    m_kind->addItem(QString(), int(OverlayClip::Video));
    m_form->addRow(m_kindLabel, m_kind);
    m_textLabel = new QLabel(this);
    m_text = new QLineEdit(this);
    m_text->setMaxLength(TextOverlayData::kMaxTextLength);
    m_form->addRow(m_textLabel, m_text);
    m_mediaLabel = new QLabel(this);
    m_mediaRow = fileRow(this, &m_media, &m_browseMedia);
    m_form->addRow(m_mediaLabel, m_mediaRow);

    auto *rect = new QWidget(this);
    auto *rectLayout = new QHBoxLayout(rect);
    rectLayout->setContentsMargins(0, 0, 0, 0);
    m_x = unitSpin(rect);
    m_y = unitSpin(rect);
    m_w = unitSpin(rect);
    m_h = unitSpin(rect);
    for (QDoubleSpinBox *spin : {m_x, m_y, m_w, m_h})
        rectLayout->addWidget(spin);
    m_rectLabel = new QLabel(this);
    m_form->addRow(m_rectLabel, rect);
    m_opacityLabel = new QLabel(this);
    m_opacity = unitSpin(this);
    m_form->addRow(m_opacityLabel, m_opacity);

    m_times = new ClipTimesEditor(m_form, this);

    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    m_cancel = buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    m_ok->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(m_form);
    layout->addStretch(1);
    layout->addWidget(buttons);

    connect(m_kind, &QComboBox::currentIndexChanged, this, &OverlayClipDialog::showKindFields);
    connect(m_browseMedia, &QPushButton::clicked, this, &OverlayClipDialog::browseMedia);
    retranslateUi();
    setRow(ScheduleOverlayRow{});
    setMinimumWidth(460);
}

int OverlayClipDialog::chosenKind() const
{
    return m_kind->currentData().toInt();
}

void OverlayClipDialog::setRow(const ScheduleOverlayRow &row)
{
    m_row = row;
    const OverlayClip &c = row.clip;
    m_id->setText(c.id);
    m_kind->setCurrentIndex(qMax(0, m_kind->findData(c.kind)));
    m_text->setText(c.textData.text);
    m_media->setText(c.path);
    m_x->setValue(c.x);
    m_y->setValue(c.y);
    m_w->setValue(c.w);
    m_h->setValue(c.h);
    m_opacity->setValue(c.opacity);
    const QDateTime start = row.start.isValid() ? row.start : QDateTime::currentDateTime();
    m_times->set(start, row.end, row.openEnded);
    showKindFields();
}

ScheduleOverlayRow OverlayClipDialog::row() const
{
    ScheduleOverlayRow row = m_row;
    OverlayClip &c = row.clip;
    c.id = m_id->text().trimmed();
    c.kind = chosenKind();
    // Only the words are edited here; the style stays as it came.
    if (c.kind == OverlayClip::Text)
        c.textData.text = m_text->text();
    else
        c.path = m_media->text().trimmed();
    // A spin box shows three decimals; a value it did not change stays exact.
    const auto keep = [](double old, const QDoubleSpinBox *spin) {
        return qAbs(old - spin->value()) < 0.0005 ? old : spin->value();
    };
    c.x = keep(c.x, m_x);
    c.y = keep(c.y, m_y);
    c.w = keep(c.w, m_w);
    c.h = keep(c.h, m_h);
    c.opacity = keep(c.opacity, m_opacity);
    row.start = m_times->start();
    row.end = m_times->end();
    row.openEnded = m_times->openEnded();
    return row;
}

void OverlayClipDialog::showKindFields()
{
    const bool text = chosenKind() == OverlayClip::Text;
    m_form->setRowVisible(m_text, text);
    m_form->setRowVisible(m_mediaRow, !text);
    // A text sits where its own style puts it; the rectangle places pictures.
    m_form->setRowVisible(m_rectLabel, !text);
    m_form->setRowVisible(m_opacity, !text);
}

void OverlayClipDialog::browseMedia()
{
    const bool video = chosenKind() == OverlayClip::Video;
    const QString file = QFileDialog::getOpenFileName(
        this, video ? tr("Choose the Overlay Video") : tr("Choose the Overlay Image"),
        m_media->text(),
        video ? tr("Videos (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;All files (*)")
              : tr("Images (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;All files (*)"));
    if (!file.isEmpty())
        m_media->setText(file);
}

void OverlayClipDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QDialog::changeEvent(event);
}

void OverlayClipDialog::retranslateUi()
{
    setWindowTitle(tr("Overlay Clip"));
    m_idLabel->setText(tr("ID:"));
    m_id->setAccessibleName(tr("Clip ID"));
    m_kindLabel->setText(tr("Kind:"));
    m_kind->setAccessibleName(tr("Overlay kind"));
    m_kind->setItemText(0, tr("Text"));
    m_kind->setItemText(1, tr("Image"));
    m_kind->setItemText(2, tr("Video"));
    m_textLabel->setText(tr("Text:"));
    m_text->setAccessibleName(tr("Overlay text"));
    m_mediaLabel->setText(tr("File:"));
    m_media->setAccessibleName(tr("Media file"));
    m_browseMedia->setText(tr("Browse..."));
    m_browseMedia->setAccessibleName(tr("Browse for the media file"));
    m_rectLabel->setText(tr("X, Y, W, H:"));
    m_rectLabel->setToolTip(tr("The rectangle as fractions of the canvas width and height."));
    m_x->setAccessibleName(tr("X"));
    m_y->setAccessibleName(tr("Y"));
    m_w->setAccessibleName(tr("Width"));
    m_h->setAccessibleName(tr("Height"));
    m_opacityLabel->setText(tr("Opacity:"));
    m_opacity->setAccessibleName(tr("Opacity"));
    m_times->retranslate();
    m_ok->setText(tr("OK"));
    m_ok->setAccessibleName(tr("OK"));
    m_cancel->setText(tr("Cancel"));
    m_cancel->setAccessibleName(tr("Cancel"));
}

} // namespace selvane
