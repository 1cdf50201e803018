#include "panels/ImagePlaybackPanel.h"

#include "engine/Engine.h"
#include "media/StoredSettings.h"

#include <QCheckBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace selvane {

namespace {

const char *const kDirectoryKey = "imagePlayback/lastDirectory";
const char *const kIntervalKey = "imagePlayback/intervalSeconds";
const char *const kLoopKey = "imagePlayback/loop";

} // namespace

ImagePlaybackPanel::ImagePlaybackPanel(Engine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine)
{
    setObjectName("imagePlaybackPanel");
    StoredSettings settings;
    m_heading = new QLabel(this);
    m_heading->setWordWrap(true);
    m_list = new QListWidget(this);
    m_list->setObjectName("slideList");
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setMinimumHeight(70);
    m_folder = new QPushButton(this);
    m_add = new QPushButton(this);
    m_remove = new QPushButton(this);
    m_clear = new QPushButton(this);
    auto *fileButtons = new QGridLayout;
    fileButtons->addWidget(m_folder, 0, 0);
    fileButtons->addWidget(m_add, 0, 1);
    fileButtons->addWidget(m_remove, 1, 0);
    fileButtons->addWidget(m_clear, 1, 1);

    m_intervalLabel = new QLabel(this);
    m_interval = new QDoubleSpinBox(this);
    m_interval->setRange(0.5, 3600.0);
    m_interval->setDecimals(1);
    m_interval->setSingleStep(0.5);
    m_interval->setValue(settings.value(kIntervalKey, 3.0).toDouble());
    m_loop = new QCheckBox(this);
    m_loop->setChecked(settings.value(kLoopKey, true).toBool());
    auto *timing = new QHBoxLayout;
    timing->addWidget(m_intervalLabel);
    timing->addWidget(m_interval);
    timing->addWidget(m_loop);
    timing->addStretch();

    m_start = new QPushButton(this);
    m_start->setObjectName("startSlides");
    m_stop = new QPushButton(this);
    auto *transport = new QHBoxLayout;
    transport->addWidget(m_start);
    transport->addWidget(m_stop);
    m_status = new QLabel(this);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_list, 1);
    layout->addLayout(fileButtons);
    layout->addLayout(timing);
    layout->addLayout(transport);
    layout->addWidget(m_status);

    connect(m_folder, &QPushButton::clicked, this, [this] {
        StoredSettings settings;
        const QString directory = QFileDialog::getExistingDirectory(
            this, tr("Choose an Image Folder"), settings.value(kDirectoryKey).toString());
        if (directory.isEmpty())
            return;
        settings.setValue(kDirectoryKey, directory);
        setFolder(directory);
    });
    connect(m_add, &QPushButton::clicked, this, [this] {
        StoredSettings settings;
        const QStringList files = QFileDialog::getOpenFileNames(
            this, tr("Choose Images"), settings.value(kDirectoryKey).toString(),
            tr("Images (*.png *.jpg *.jpeg *.bmp *.webp);;All files (*)"));
        if (files.isEmpty())
            return;
        settings.setValue(kDirectoryKey, QFileInfo(files.first()).absolutePath());
        setPaths(m_paths + files);
    });
    connect(m_remove, &QPushButton::clicked, this, [this] {
        QList<int> rows;
        for (const QModelIndex &index : m_list->selectionModel()->selectedRows())
            rows << index.row();
        std::sort(rows.rbegin(), rows.rend());
        QStringList paths = m_paths;
        for (int row : rows)
            paths.removeAt(row);
        setPaths(paths);
    });
    connect(m_clear, &QPushButton::clicked, this, [this] { setPaths({}); });
    connect(m_start, &QPushButton::clicked, this, &ImagePlaybackPanel::start);
    connect(m_stop, &QPushButton::clicked, this, &ImagePlaybackPanel::stop);
    connect(m_interval, &QDoubleSpinBox::valueChanged, this,
            [](double seconds) { StoredSettings().setValue(kIntervalKey, seconds); });
    connect(m_loop, &QCheckBox::toggled, this,
            [](bool loop) { StoredSettings().setValue(kLoopKey, loop); });
    connect(engine, &Engine::slideShown, this, [this](int shown) {
        m_shown = shown;
        m_slideOnAir = m_playing;
        showProgress();
    });
    retranslateUi();
    showProgress();
}

void ImagePlaybackPanel::setPaths(const QStringList &paths)
{
    m_paths = paths;
    refreshList();
    showProgress();
}

void ImagePlaybackPanel::setFolder(const QString &directory)
{
    const QStringList names =
        QDir(directory).entryList({"*.png", "*.jpg", "*.jpeg", "*.bmp", "*.webp"},
                                  QDir::Files | QDir::Readable, QDir::Name | QDir::IgnoreCase);
    QStringList paths;
    for (const QString &name : names)
        paths << QDir(directory).filePath(name);
    setPaths(paths);
}

void ImagePlaybackPanel::refreshList()
{
    m_list->clear();
    for (const QString &path : m_paths) {
        auto *item = new QListWidgetItem(QFileInfo(path).fileName(), m_list);
        item->setToolTip(path);
    }
}

void ImagePlaybackPanel::start()
{
    if (const Problem problem = m_engine->showImages(m_paths, qRound(m_interval->value() * 1000),
                                                     m_loop->isChecked())) {
        m_status->setText(problemText(problem));
        return;
    }
    m_playing = true;
    m_slideOnAir = false;
    m_shown = 0;
    showProgress();
}

void ImagePlaybackPanel::stop()
{
    if (!m_playing)
        return;
    m_playing = false;
    m_engine->stopImages(); // back to what was on air before the slides
    showProgress();
}

void ImagePlaybackPanel::showProgram(const ProgramStats &program)
{
    // A channel taken while the slides run ends them (until the first slide is on air, the
    // channel before it still is).
    if (m_playing && m_slideOnAir && program.channel >= 0) {
        m_playing = false;
        showProgress();
    }
}

void ImagePlaybackPanel::showProgress()
{
    m_start->setEnabled(!m_paths.isEmpty());
    m_stop->setEnabled(m_playing);
    m_remove->setEnabled(!m_paths.isEmpty());
    m_clear->setEnabled(!m_paths.isEmpty());
    if (!m_playing) {
        m_status->setText(m_paths.isEmpty()
                              ? QString()
                              : tr("%n image(s), not on air", nullptr, int(m_paths.size())));
        return;
    }
    const int count = int(m_paths.size());
    const int index = m_loop->isChecked() ? m_shown % count : std::min(m_shown, count - 1);
    m_status->setText(tr("On air: image %1 of %2").arg(index + 1).arg(count));
    m_list->setCurrentRow(index);
}

void ImagePlaybackPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void ImagePlaybackPanel::retranslateUi()
{
    m_heading->setText(tr("Still images as the program picture, one after another."));
    m_list->setAccessibleName(tr("Slides"));
    m_folder->setText(tr("Choose Folder..."));
    m_folder->setAccessibleName(tr("Choose Folder"));
    m_add->setText(tr("Add Images..."));
    m_add->setAccessibleName(tr("Add Images"));
    m_remove->setText(tr("Remove"));
    m_remove->setAccessibleName(tr("Remove Images"));
    m_clear->setText(tr("Clear"));
    m_clear->setAccessibleName(tr("Clear Images"));
    m_intervalLabel->setText(tr("Each image:"));
    m_interval->setSuffix(tr(" s"));
    m_interval->setAccessibleName(tr("Slide interval"));
    m_loop->setText(tr("Loop"));
    m_loop->setAccessibleName(tr("Loop slides"));
    m_start->setText(tr("Start Slides"));
    m_start->setAccessibleName(tr("Start Slides"));
    m_stop->setText(tr("Stop Slides"));
    m_stop->setAccessibleName(tr("Stop Slides"));
    m_status->setAccessibleName(tr("Slide status"));
    showProgress();
}

} // namespace selvane
