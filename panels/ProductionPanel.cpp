#include "panels/ProductionPanel.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>
#include <functional>

namespace selvane {

namespace {
constexpr int kTBarSteps = 1000;
const QColor kPreviewGreen(0x2e, 0xb8, 0x4d);
} // namespace

// The preview bus's picture, letterboxed in a green frame; a dark field while there is none.
class PreviewMonitor : public QWidget
{
public:
    explicit PreviewMonitor(QWidget *parent) : QWidget(parent)
    {
        setMinimumSize(192, 108);
        QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    QSize sizeHint() const override { return {384, 216}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return (width - 6) * 9 / 16 + 6; }
    void setImage(const QImage &image)
    {
        m_image = image;
        update();
    }
    QRect pictureRect() const { return rect().adjusted(3, 3, -3, -3); }
    std::function<void()> resized;

protected:
    void resizeEvent(QResizeEvent *) override
    {
        if (resized)
            resized();
    }
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), kPreviewGreen);
        const QRect inside = pictureRect();
        painter.fillRect(inside, QColor(0x0c, 0x0e, 0x12));
        if (m_image.isNull())
            return;
        QRect target(QPoint(0, 0), m_image.size().scaled(inside.size(), Qt::KeepAspectRatio));
        target.moveCenter(inside.center());
        painter.drawImage(target, m_image);
    }

private:
    QImage m_image;
};

ProductionPanel::ProductionPanel(QWidget *parent) : QFrame(parent)
{
    setObjectName("productionPanel");
    setAccessibleName("Production");
    setFrameShape(QFrame::StyledPanel);

    m_title = new QLabel(this);
    m_title->setObjectName("previewTitle");
    m_monitor = new PreviewMonitor(this);
    m_monitor->setAccessibleName("Preview Monitor");
    m_monitor->resized = [this] {
        emit monitorResized(monitorSize());
    };

    m_kindLabel = new QLabel(this);
    m_kind = new QComboBox(this);
    m_kind->setAccessibleName("Transition");
    m_direction = new QComboBox(this);
    m_direction->setAccessibleName("Wipe Direction");
    m_durationLabel = new QLabel(this);
    m_duration = new QSpinBox(this);
    m_duration->setAccessibleName("Transition Duration");
    m_duration->setRange(Transition::kMinMs, Transition::kMaxMs);
    m_duration->setSingleStep(100);
    m_duration->setValue(Transition::kDefaultMs);
    m_stingerLabel = new QLabel(this);
    m_stingerFile = new QLineEdit(this);
    m_stingerFile->setAccessibleName("Stinger Clip");
    m_stingerBrowse = new QPushButton(QStringLiteral("…"), this);
    m_stingerBrowse->setAccessibleName("Choose Stinger Clip");
    m_cutLabel = new QLabel(this);
    m_stingerCut = new QSpinBox(this);
    m_stingerCut->setAccessibleName("Stinger Cut Point");
    m_stingerCut->setRange(-1, StingerClip::kMaxMs);
    m_stingerCut->setSingleStep(40);
    m_stingerCut->setValue(-1);
    m_stingerState = new QLabel(this);
    m_stingerState->setAccessibleName("Stinger State");
    m_stingerState->setWordWrap(true);
    m_directTakes = new QCheckBox(this);
    m_directTakes->setAccessibleName("Direct Takes Use the Transition");

    m_take = new QPushButton(this);
    m_take->setAccessibleName("Take");
    m_take->setObjectName("productionTake");
    m_cut = new QPushButton(this);
    m_cut->setAccessibleName("Cut");
    m_slateButton = new QPushButton(this);
    m_slateButton->setAccessibleName("Slate");
    m_slateButton->setCheckable(true);
    m_fade = new QPushButton(this);
    m_fade->setAccessibleName("Fade to Black");
    m_fade->setCheckable(true);
    m_tbar = new QSlider(Qt::Vertical, this);
    m_tbar->setAccessibleName("T-Bar");
    m_tbar->setRange(0, kTBarSteps);
    m_tbar->setMinimumHeight(90);
    m_tbarLabel = new QLabel(this);
    m_tbarLabel->setAlignment(Qt::AlignHCenter);

    auto *settings = new QGridLayout;
    settings->addWidget(m_kindLabel, 0, 0);
    settings->addWidget(m_kind, 0, 1);
    settings->addWidget(m_direction, 1, 1);
    settings->addWidget(m_durationLabel, 2, 0);
    settings->addWidget(m_duration, 2, 1);
    auto *stingerFile = new QHBoxLayout;
    stingerFile->addWidget(m_stingerFile, 1);
    stingerFile->addWidget(m_stingerBrowse);
    settings->addWidget(m_stingerLabel, 3, 0);
    settings->addLayout(stingerFile, 3, 1);
    settings->addWidget(m_cutLabel, 4, 0);
    settings->addWidget(m_stingerCut, 4, 1);
    settings->addWidget(m_stingerState, 5, 0, 1, 2);
    settings->addWidget(m_directTakes, 6, 0, 1, 2);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_take);
    buttons->addWidget(m_cut);
    buttons->addStretch(1);
    buttons->addWidget(m_slateButton);
    buttons->addWidget(m_fade);
    auto *bar = new QVBoxLayout;
    bar->addWidget(m_tbarLabel);
    bar->addWidget(m_tbar, 1, Qt::AlignHCenter);
    auto *controls = new QHBoxLayout;
    controls->addLayout(settings, 1);
    controls->addLayout(buttons);
    controls->addLayout(bar);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_title);
    layout->addWidget(m_monitor);
    layout->addLayout(controls);
    layout->addStretch(1);

    m_blink = new QTimer(this);
    m_blink->setInterval(500);
    connect(m_blink, &QTimer::timeout, this, [this] {
        m_blinkOn = !m_blinkOn;
        m_fade->setStyleSheet(m_blinkOn ? QStringLiteral("background: #c0392b; color: white;")
                                        : QString());
    });
    connect(m_kind, &QComboBox::activated, this, [this] {
        showDirection();
        emitTransition();
    });
    connect(m_direction, &QComboBox::activated, this, &ProductionPanel::emitTransition);
    connect(m_duration, &QSpinBox::editingFinished, this, &ProductionPanel::emitTransition);
    connect(m_stingerFile, &QLineEdit::editingFinished, this, &ProductionPanel::emitTransition);
    connect(m_stingerBrowse, &QPushButton::clicked, this, &ProductionPanel::chooseStingerFile);
    connect(m_stingerCut, &QSpinBox::editingFinished, this, &ProductionPanel::emitTransition);
    connect(m_directTakes, &QCheckBox::toggled, this, &ProductionPanel::directTakesChosen);
    // The button shows the engine's state (setSlateOnAir), not its own.
    connect(m_slateButton, &QPushButton::clicked, this, [this] {
        m_slateButton->setChecked(m_slate);
        if (!m_slate)
            emit slateRequested();
    });
    connect(m_tbar, &QSlider::valueChanged, this,
            [this](int value) { emit tbarMoved(double(value) / kTBarSteps); });

    retranslateUi();
    showDirection();
}

void ProductionPanel::setSlateOnAir(bool onAir)
{
    m_slate = onAir;
    m_slateButton->setChecked(onAir);
}

void ProductionPanel::useActions(QAction *take, QAction *cut, QAction *fadeToBlack)
{
    connect(m_take, &QPushButton::clicked, take, &QAction::trigger);
    connect(m_cut, &QPushButton::clicked, cut, &QAction::trigger);
    // The button shows the engine's state (setFadedToBlack), not its own.
    connect(m_fade, &QPushButton::clicked, this, [this, fadeToBlack] {
        m_fade->setChecked(m_black);
        fadeToBlack->trigger();
    });
}

void ProductionPanel::setPreviewChannel(int channel)
{
    m_previewChannel = channel;
    if (channel < 0)
        m_monitor->setImage({});
    retranslateUi();
}

void ProductionPanel::setPreviewImage(const QImage &image)
{
    if (m_previewChannel >= 0)
        m_monitor->setImage(image);
}

QSize ProductionPanel::monitorSize() const
{
    return m_monitor->pictureRect().size() * m_monitor->devicePixelRatioF();
}

void ProductionPanel::setTransition(const Transition &transition)
{
    const QSignalBlocker blockKind(m_kind), blockDirection(m_direction), blockMs(m_duration),
        blockFile(m_stingerFile), blockCut(m_stingerCut);
    m_kind->setCurrentIndex(int(transition.kind));
    m_direction->setCurrentIndex(int(transition.direction));
    m_duration->setValue(transition.durationMs);
    if (m_stingerFile->text() != transition.stingerFile)
        m_stingerFile->setText(transition.stingerFile);
    m_stingerCut->setValue(transition.cutMs);
    showDirection();
}

void ProductionPanel::setStingerInfo(const StingerInfo &info)
{
    m_stingerInfo = info;
    retranslateUi();
}

void ProductionPanel::chooseStingerFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Choose a Stinger Clip"), QFileInfo(m_stingerFile->text()).absolutePath(),
        tr("Clips with alpha (*.mov *.webm *.mkv *.avi *.mp4);;All files (*)"));
    if (path.isEmpty())
        return;
    m_stingerFile->setText(path);
    emitTransition();
}

void ProductionPanel::setDirectTakes(bool on)
{
    const QSignalBlocker block(m_directTakes);
    m_directTakes->setChecked(on);
}

void ProductionPanel::setTBar(double position)
{
    const QSignalBlocker block(m_tbar);
    m_tbar->setValue(int(std::lround(position * kTBarSteps)));
}

void ProductionPanel::setFadedToBlack(bool black)
{
    m_black = black;
    m_fade->setChecked(black);
    if (black) {
        m_blink->start();
    } else {
        m_blink->stop();
        m_blinkOn = false;
        m_fade->setStyleSheet(QString());
    }
}

void ProductionPanel::emitTransition()
{
    Transition transition;
    transition.kind = TransitionKind(std::max(0, m_kind->currentIndex()));
    transition.direction = WipeDirection(std::max(0, m_direction->currentIndex()));
    transition.durationMs = m_duration->value();
    if (transition.kind == TransitionKind::Stinger) {
        transition.stingerFile = m_stingerFile->text().trimmed();
        transition.cutMs = m_stingerCut->value();
        if (transition.stingerFile.isEmpty()) {
            m_stingerFile->setFocus(); // a stinger is nothing without its clip: asked for first
            return;
        }
    }
    emit transitionChosen(transition);
}

void ProductionPanel::showDirection()
{
    const int kind = m_kind->currentIndex();
    m_direction->setVisible(kind == int(TransitionKind::Wipe));
    // A stinger lasts as long as its clip.
    m_duration->setEnabled(kind != int(TransitionKind::Cut) &&
                           kind != int(TransitionKind::Stinger));
    const bool stinger = kind == int(TransitionKind::Stinger);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{m_stingerLabel, m_stingerFile, m_stingerBrowse,
                                          m_cutLabel, m_stingerCut, m_stingerState})
        widget->setVisible(stinger);
}

void ProductionPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QFrame::changeEvent(event);
}

void ProductionPanel::retranslateUi()
{
    m_title->setText(m_previewChannel >= 0 ? tr("Preview: Channel %1").arg(m_previewChannel + 1)
                                           : tr("Preview: none (click a channel's picture)"));
    const int kind = std::max(0, m_kind->currentIndex());
    const int direction = std::max(0, m_direction->currentIndex());
    m_kind->clear();
    m_kind->addItems({tr("Cut"), tr("Mix"), tr("Wipe"), tr("Dip to colour"), tr("Stinger")});
    m_kind->setCurrentIndex(kind);
    m_direction->clear();
    m_direction->addItems(
        {tr("Left to right"), tr("Right to left"), tr("Top down"), tr("Bottom up")});
    m_direction->setCurrentIndex(direction);
    m_kindLabel->setText(tr("Transition"));
    m_durationLabel->setText(tr("Duration"));
    m_duration->setSuffix(tr(" ms"));
    m_stingerLabel->setText(tr("Clip"));
    m_stingerFile->setPlaceholderText(tr("A video with alpha"));
    m_stingerBrowse->setToolTip(tr("Choose a stinger clip"));
    m_cutLabel->setText(tr("Switch at"));
    m_stingerCut->setSuffix(tr(" ms"));
    m_stingerCut->setSpecialValueText(tr("Middle"));
    const StingerInfo &info = m_stingerInfo;
    if (info.state == QLatin1String("ready"))
        m_stingerState->setText(
            (info.hasAlpha ? tr("Ready: %1 s, switch at %2 s")
                           : tr("Ready: %1 s, switch at %2 s (no alpha: it covers the picture)"))
                .arg(info.durationMs / 1000.0, 0, 'f', 2)
                .arg(info.cutMs / 1000.0, 0, 'f', 2));
    else if (info.state == QLatin1String("loading"))
        m_stingerState->setText(tr("Loading…"));
    else if (info.state == QLatin1String("failed"))
        m_stingerState->setText(tr("Cannot be used (%1): takes cut instead").arg(info.failure));
    else
        m_stingerState->clear();
    m_directTakes->setText(tr("Direct takes use the transition"));
    m_take->setText(tr("Take"));
    m_cut->setText(tr("Cut"));
    m_slateButton->setText(tr("Slate"));
    m_slateButton->setToolTip(tr("The slate on air; any cut or take ends it"));
    m_fade->setText(tr("FTB"));
    m_fade->setToolTip(tr("Fade to black, and back"));
    m_tbarLabel->setText(tr("T-bar"));
}

} // namespace selvane
