#include "panels/MediaOverlayPanel.h"

#include "engine/Engine.h"
#include "engine/OverlayDrawing.h"
#include "media/StoredSettings.h"
#include "panels/OverlayListModel.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <QVBoxLayout>

namespace selvane {

namespace {

// Overlays the schedule shows have ids from here on; the panel's own stay below.
constexpr int kLiveMoveMs = 40; // a dragged frame reaches the program 25 times a second
const char *const kDirectoryKey = "source/lastMediaDirectory";

} // namespace

MediaOverlayPanel::MediaOverlayPanel(Engine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine)
{
    setObjectName("mediaOverlayPanel");
    m_showing = true; // until every field exists
    m_heading = new QLabel(this);
    m_heading->setWordWrap(true);
    m_model = new OverlayListModel(engine, OverlayListModel::Kind::Media, this);
    m_list = new QListView(this);
    m_list->setObjectName("mediaOverlayList");
    m_list->setModel(m_model);
    m_list->setMinimumHeight(70);
    m_addImage = new QPushButton(this);
    m_addVideo = new QPushButton(this);
    m_remove = new QPushButton(this);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_addImage);
    buttons->addWidget(m_addVideo);
    buttons->addWidget(m_remove);

    m_editor = new QWidget(this);
    m_form = new QFormLayout(m_editor);
    m_form->setContentsMargins(0, 0, 0, 0);
    m_file = new QLabel(m_editor);
    m_file->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_file->setMinimumWidth(60);
    m_changeFile = new QPushButton(m_editor);
    auto *fileRow = new QHBoxLayout;
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(m_changeFile);
    m_form->addRow(new QLabel(m_editor), fileRow);
    const QSizeF scene = OverlayDrawing::sceneSize();
    auto number = [this](double maximum) {
        auto *box = new QDoubleSpinBox(m_editor);
        box->setRange(-maximum, 2 * maximum);
        box->setDecimals(1);
        box->setSingleStep(1.0);
        connect(box, &QDoubleSpinBox::valueChanged, this, &MediaOverlayPanel::applyFields);
        return box;
    };
    m_x = number(scene.width());
    m_y = number(scene.height());
    m_w = number(scene.width());
    m_h = number(scene.height());
    m_w->setMinimum(1.0);
    m_h->setMinimum(1.0);
    auto *place = new QHBoxLayout;
    for (QDoubleSpinBox *box : {m_x, m_y})
        place->addWidget(box);
    auto *size = new QHBoxLayout;
    for (QDoubleSpinBox *box : {m_w, m_h})
        size->addWidget(box);
    m_form->addRow(new QLabel(m_editor), place);
    m_form->addRow(new QLabel(m_editor), size);
    m_opacity = new QSlider(Qt::Horizontal, m_editor);
    m_opacity->setRange(0, 100);
    m_opacityValue = new QLabel(m_editor);
    m_opacityValue->setMinimumWidth(36);
    auto *opacityRow = new QHBoxLayout;
    opacityRow->addWidget(m_opacity, 1);
    opacityRow->addWidget(m_opacityValue);
    m_form->addRow(new QLabel(m_editor), opacityRow);
    m_visible = new QCheckBox(m_editor);
    m_loop = new QCheckBox(m_editor);
    auto *flags = new QHBoxLayout;
    flags->addWidget(m_visible);
    flags->addWidget(m_loop);
    flags->addStretch();
    m_form->addRow(flags);
    m_hint = new QLabel(this);
    m_hint->setWordWrap(true);
    m_hint->setStyleSheet("color:#9aa0aa;font-size:11px;");

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    layout->addWidget(m_editor);
    layout->addWidget(m_hint);

    m_showing = false;
    connect(m_opacity, &QSlider::valueChanged, this, &MediaOverlayPanel::applyFields);
    connect(m_visible, &QCheckBox::toggled, this, &MediaOverlayPanel::applyFields);
    connect(m_loop, &QCheckBox::toggled, this, &MediaOverlayPanel::applyFields);
    connect(m_addImage, &QPushButton::clicked, this,
            [this] { browseAndAdd(MediaOverlayRecord::StillImage); });
    connect(m_addVideo, &QPushButton::clicked, this,
            [this] { browseAndAdd(MediaOverlayRecord::OverlayVideo); });
    connect(m_remove, &QPushButton::clicked, this, &MediaOverlayPanel::removeSelected);
    connect(m_changeFile, &QPushButton::clicked, this, &MediaOverlayPanel::changeFile);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                const int id = m_model->idAt(current.row());
                if (id == m_selected)
                    return;
                m_selected = id;
                showSelected();
                emit selectedChanged(id);
                emit framesChanged();
            });
    // The model follows the engine; the fields and the preview's frames follow the model.
    connect(m_model, &QAbstractItemModel::dataChanged, this, &MediaOverlayPanel::refresh);
    connect(m_model, &QAbstractItemModel::modelReset, this, &MediaOverlayPanel::refresh);
    retranslateUi();
    refresh();
}

bool MediaOverlayPanel::editable(const MediaOverlayRecord &record) const
{
    return !Engine::isScheduleOverlay(record.id);
}

const MediaOverlayRecord *MediaOverlayPanel::find(int id) const
{
    for (const MediaOverlayRecord &record : m_model->media())
        if (record.id == id)
            return &record;
    return nullptr;
}

QList<MediaOverlayRecord> MediaOverlayPanel::editableOverlays() const
{
    QList<MediaOverlayRecord> list;
    for (const MediaOverlayRecord &record : m_model->media())
        if (editable(record))
            list.append(record);
    return list;
}

void MediaOverlayPanel::refresh()
{
    if (!find(m_selected))
        m_selected = -1;
    select(m_selected);
    showSelected();
    emit framesChanged();
}

void MediaOverlayPanel::select(int id)
{
    const QModelIndex index = m_model->indexOf(id);
    if (index.isValid())
        m_list->setCurrentIndex(index);
    else
        m_list->clearSelection();
}

void MediaOverlayPanel::showSelected()
{
    const MediaOverlayRecord *record = find(m_selected);
    m_editor->setEnabled(record && editable(*record));
    m_remove->setEnabled(record && editable(*record));
    m_showing = true;
    if (record) {
        m_file->setText(QFileInfo(record->filePath).fileName());
        m_file->setToolTip(record->filePath);
        m_x->setValue(record->rect.x());
        m_y->setValue(record->rect.y());
        m_w->setValue(record->rect.width());
        m_h->setValue(record->rect.height());
        m_opacity->setValue(qRound(std::clamp(record->opacity, 0.0, 1.0) * 100));
        m_visible->setChecked(record->visible);
        m_loop->setChecked(record->loop);
        m_loop->setVisible(record->kind == MediaOverlayRecord::OverlayVideo);
    } else {
        m_file->clear();
        m_loop->setVisible(false);
    }
    m_opacityValue->setText(QString("%1 %").arg(m_opacity->value()));
    m_showing = false;
}

void MediaOverlayPanel::applyFields()
{
    if (m_showing)
        return;
    m_opacityValue->setText(QString("%1 %").arg(m_opacity->value()));
    const MediaOverlayRecord *found = find(m_selected);
    if (!found || !editable(*found))
        return;
    MediaOverlayRecord record = *found;
    record.rect = QRectF(m_x->value(), m_y->value(), m_w->value(), m_h->value());
    record.opacity = m_opacity->value() / 100.0;
    record.visible = m_visible->isChecked();
    record.loop = m_loop->isChecked();
    m_engine->setMediaOverlay(record);
}

void MediaOverlayPanel::moveOverlay(int id, QRectF rect, bool finished)
{
    const MediaOverlayRecord *found = find(id);
    if (!found || !editable(*found))
        return;
    if (id != m_selected)
        select(id);
    // The numbers follow the drag at once; the program at most 25 times a second, and exactly
    // where the drag ends.
    m_showing = true;
    m_x->setValue(rect.x());
    m_y->setValue(rect.y());
    m_w->setValue(rect.width());
    m_h->setValue(rect.height());
    m_showing = false;
    if (!finished && m_lastLiveMove.isValid() && m_lastLiveMove.elapsed() < kLiveMoveMs)
        return;
    m_lastLiveMove.start();
    MediaOverlayRecord record = *found;
    record.rect = rect;
    m_engine->setMediaOverlay(record);
}

int MediaOverlayPanel::addOverlay(MediaOverlayRecord::Kind kind, const QString &path)
{
    Problem problem;
    const int id = m_engine->addMediaOverlay(kind, path, &problem);
    if (problem) {
        refuse(problemText(problem));
        return -1;
    }
    refresh();
    select(id);
    return id;
}

void MediaOverlayPanel::browseAndAdd(MediaOverlayRecord::Kind kind)
{
    StoredSettings settings;
    const QString filter =
        kind == MediaOverlayRecord::StillImage
            ? tr("Images (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;All files (*)")
            : tr("Videos (*.mp4 *.mov *.mkv *.avi *.webm *.ts *.flv *.m4v);;All files (*)");
    const QString path = QFileDialog::getOpenFileName(
        this, kind == MediaOverlayRecord::StillImage ? tr("Choose an Image") : tr("Choose a Video"),
        settings.value(kDirectoryKey).toString(), filter);
    if (path.isEmpty())
        return;
    settings.setValue(kDirectoryKey, QFileInfo(path).absolutePath());
    addOverlay(kind, path);
}

void MediaOverlayPanel::changeFile()
{
    const MediaOverlayRecord *found = find(m_selected);
    if (!found || !editable(*found))
        return;
    StoredSettings settings;
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Choose a File"), QFileInfo(found->filePath).absolutePath(), tr("All files (*)"));
    if (path.isEmpty())
        return;
    MediaOverlayRecord record = *found;
    record.filePath = path;
    m_engine->setMediaOverlay(record);
}

void MediaOverlayPanel::removeSelected()
{
    const MediaOverlayRecord *found = find(m_selected);
    if (!found || !editable(*found))
        return;
    m_engine->removeMediaOverlay(found->id);
}

void MediaOverlayPanel::refuse(const QString &text)
{
    auto *box =
        new QMessageBox(QMessageBox::Warning, tr("Video Overlay"), text, QMessageBox::Ok, this);
    box->setObjectName("mediaOverlayMessage");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void MediaOverlayPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void MediaOverlayPanel::retranslateUi()
{
    m_heading->setText(tr("Pictures and videos over the program (at most %1).")
                           .arg(OverlayScene::kMaxMediaOverlays));
    m_list->setAccessibleName(tr("Media overlays"));
    m_addImage->setText(tr("Add Image..."));
    m_addImage->setAccessibleName(tr("Add Image"));
    m_addVideo->setText(tr("Add Video..."));
    m_addVideo->setAccessibleName(tr("Add Video"));
    m_remove->setText(tr("Remove"));
    m_remove->setAccessibleName(tr("Remove Overlay"));
    m_changeFile->setText(tr("File..."));
    m_changeFile->setAccessibleName(tr("Overlay file"));
    const std::pair<QWidget *, QString> rows[] = {{m_x, tr("X")},
                                                  {m_y, tr("Y")},
                                                  {m_w, tr("Width")},
                                                  {m_h, tr("Height")},
                                                  {m_opacity, tr("Opacity")}};
    for (const auto &[widget, name] : rows)
        widget->setAccessibleName(name);
    auto label = [this](QLayout *row, const QString &text) {
        if (auto *l = qobject_cast<QLabel *>(m_form->labelForField(row)))
            l->setText(text);
    };
    label(m_form->itemAt(0, QFormLayout::FieldRole)->layout(), tr("File:"));
    label(m_form->itemAt(1, QFormLayout::FieldRole)->layout(), tr("Position:"));
    label(m_form->itemAt(2, QFormLayout::FieldRole)->layout(), tr("Size:"));
    label(m_form->itemAt(3, QFormLayout::FieldRole)->layout(), tr("Opacity:"));
    m_x->setPrefix(tr("X "));
    m_y->setPrefix(tr("Y "));
    m_w->setPrefix(tr("W "));
    m_h->setPrefix(tr("H "));
    m_visible->setText(tr("Visible"));
    m_visible->setAccessibleName(tr("Visible"));
    m_loop->setText(tr("Loop"));
    m_loop->setAccessibleName(tr("Loop video"));
    m_hint->setText(tr("Places are in the 640 x 360 scene, whatever the output size. Drag the "
                       "chosen overlay's frame on the program preview to move it; pull a corner "
                       "or an edge to resize it. A video's sound is set on its strip in the "
                       "audio mixer."));
    m_model->retranslate(); // the rows' words are read again
}

} // namespace selvane
