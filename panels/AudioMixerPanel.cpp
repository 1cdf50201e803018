#include "panels/AudioMixerPanel.h"

#include "engine/CaptureSources.h"
#include "engine/Engine.h"
#include "panels/LevelMeter.h"

#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace selvane {

namespace {
// Fader positions are tenths of a dB from -60 dB to +6 dB; the bottom position is silence.
constexpr int kFaderMin = -600;
constexpr int kFaderMax = 60;
} // namespace

struct AudioMixerPanel::Strip
{
    StripKind kind = StripKind::Channel;
    int id = 0; // channel 0..3 or the overlay's media id
    QString fileName;
    QWidget *box = nullptr;
    QLabel *name = nullptr;
    LevelMeter *meter = nullptr;
    QSlider *fader = nullptr;
    QLabel *value = nullptr;
    QPushButton *mute = nullptr;
    QPushButton *onProgram = nullptr; // overlays only
    ~Strip() { delete box; }
};

AudioMixerPanel::AudioMixerPanel(Engine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine)
{
    setObjectName("audioMixerPanel");
    m_strips = new QHBoxLayout;
    m_strips->setSpacing(6);
    for (int c = 0; c < kChannelCount; ++c)
        m_channelStrips << makeStrip(StripKind::Channel, c);
    m_programStrip = makeStrip(StripKind::Program, -1);
    for (Strip *strip : m_channelStrips)
        m_strips->addWidget(strip->box);
    m_strips->addStretch(1);
    m_strips->addWidget(m_programStrip->box);

    m_deviceLabel = new QLabel(this);
    m_device = new QComboBox(this);
    m_refreshDevices = new QPushButton(this);
    auto *deviceRow = new QHBoxLayout;
    deviceRow->addWidget(m_deviceLabel);
    deviceRow->addWidget(m_device, 1);
    deviceRow->addWidget(m_refreshDevices);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(m_strips, 1);
    layout->addLayout(deviceRow);

    connect(m_refreshDevices, &QPushButton::clicked, this, &AudioMixerPanel::refreshDevices);
    connect(m_device, &QComboBox::activated, this, [this](int row) {
        m_engine->setPreviewAudioDevice(m_device->itemData(row).toByteArray());
    });
    refreshDevices();
    retranslateUi();
}

AudioMixerPanel::~AudioMixerPanel()
{
    qDeleteAll(m_channelStrips);
    qDeleteAll(m_overlayStrips);
    delete m_programStrip;
}

float AudioMixerPanel::faderToLinear(int position)
{
    if (position <= kFaderMin)
        return 0.0f;
    return std::pow(10.0f, float(position) / 200.0f);
}

int AudioMixerPanel::linearToFader(float linear)
{
    if (linear <= 0.0f)
        return kFaderMin;
    return std::clamp(int(std::lround(200.0 * std::log10(double(linear)))), kFaderMin, kFaderMax);
}

AudioMixerPanel::Strip *AudioMixerPanel::makeStrip(StripKind kind, int id)
{
    auto *strip = new Strip;
    strip->kind = kind;
    strip->id = id;
    strip->box = new QWidget(this);
    strip->box->setMinimumWidth(50);
    strip->name = new QLabel(strip->box);
    strip->name->setAlignment(Qt::AlignCenter);
    strip->name->setWordWrap(true); // narrow strips: "Channel" above its number
    strip->meter = new LevelMeter(strip->box);
    strip->fader = new QSlider(Qt::Vertical, strip->box);
    strip->fader->setRange(kFaderMin, kFaderMax);
    strip->fader->setPageStep(30);
    strip->fader->setMinimumHeight(100);
    strip->value = new QLabel(strip->box);
    strip->value->setAlignment(Qt::AlignCenter);
    strip->mute = new QPushButton(strip->box);
    strip->mute->setCheckable(true);
    auto *meterRow = new QHBoxLayout;
    meterRow->addWidget(strip->meter);
    meterRow->addWidget(strip->fader);
    auto *column = new QVBoxLayout(strip->box);
    column->setContentsMargins(2, 2, 2, 2);
    column->addWidget(strip->name);
    column->addLayout(meterRow, 1);
    column->addWidget(strip->value);
    column->addWidget(strip->mute);
    if (kind == StripKind::Overlay) {
        strip->onProgram = new QPushButton(strip->box);
        strip->onProgram->setCheckable(true);
        strip->onProgram->setChecked(true);
        column->addWidget(strip->onProgram);
        connect(strip->onProgram, &QPushButton::toggled, this,
                [this, strip](bool on) { m_engine->setOverlayOnProgram(strip->id, on); });
    }

    // Where the engine stands now: the show may have set volumes before the window came up.
    switch (kind) {
    case StripKind::Channel:
        strip->fader->setValue(linearToFader(m_engine->channelVolume(id)));
        strip->mute->setChecked(m_engine->channelMuted(id));
        break;
    case StripKind::Program:
        strip->fader->setValue(linearToFader(m_engine->programVolume()));
        strip->mute->setChecked(m_engine->programMuted());
        break;
    case StripKind::Overlay:
        strip->fader->setValue(0);
        break;
    }
    connect(strip->fader, &QSlider::valueChanged, this, [this, strip] { applyFader(*strip); });
    connect(strip->mute, &QPushButton::toggled, this, [this, strip](bool muted) {
        switch (strip->kind) {
        case StripKind::Channel:
            m_engine->setChannelMuted(strip->id, muted);
            break;
        case StripKind::Program:
            m_engine->setProgramMuted(muted);
            break;
        case StripKind::Overlay:
            m_engine->setOverlayMuted(strip->id, muted);
            break;
        }
    });
    showFaderValue(*strip);
    retranslateStrip(*strip);
    return strip;
}

void AudioMixerPanel::applyFader(Strip &strip)
{
    const float volume = faderToLinear(strip.fader->value());
    switch (strip.kind) {
    case StripKind::Channel:
        m_engine->setChannelVolume(strip.id, volume);
        break;
    case StripKind::Program:
        m_engine->setProgramVolume(volume);
        break;
    case StripKind::Overlay:
        // One fader for both: what is heard in the preview is what goes on the program.
        m_engine->setOverlayVolume(strip.id, volume, volume);
        break;
    }
    showFaderValue(strip);
}

void AudioMixerPanel::showFaderValue(Strip &strip)
{
    const int position = strip.fader->value();
    strip.value->setText(position <= kFaderMin
                             ? QStringLiteral("-inf")
                             : tr("%1 dB").arg(double(position) / 10.0, 0, 'f', 1));
    strip.fader->setAccessibleDescription(strip.value->text());
}

void AudioMixerPanel::syncOverlayStrips()
{
    QList<int> ids;
    QHash<int, QString> files;
    for (const MediaOverlayRecord &record : m_engine->mediaOverlays()) {
        if (record.kind == MediaOverlayRecord::OverlayVideo) {
            ids << record.id;
            files.insert(record.id, QFileInfo(record.filePath).fileName());
        }
    }
    if (ids == m_overlayIds)
        return;
    m_overlayIds = ids;
    qDeleteAll(m_overlayStrips);
    m_overlayStrips.clear();
    for (int i = 0; i < ids.size(); ++i) {
        Strip *strip = makeStrip(StripKind::Overlay, ids[i]);
        strip->fileName = files.value(ids[i]);
        retranslateStrip(*strip);
        m_overlayStrips << strip;
        m_strips->insertWidget(kChannelCount + i, strip->box);
    }
}

void AudioMixerPanel::showStats(const EngineStats &stats)
{
    for (int c = 0; c < kChannelCount; ++c) {
        const Level &level = stats.channels[std::size_t(c)].audio;
        m_channelStrips[c]->meter->setLevel(level.peak, level.rms);
    }
    m_programStrip->meter->setLevel(stats.program.audio.peak, stats.program.audio.rms);
    // Overlays change rarely: their list is looked at a few times a second.
    if (m_ticks++ % 6 == 0)
        syncOverlayStrips();
    for (Strip *strip : m_overlayStrips) {
        const Level level = stats.overlayAudio.value(strip->id);
        strip->meter->setLevel(level.peak, level.rms);
    }
}

void AudioMixerPanel::refreshDevices()
{
    const QByteArray chosen = m_engine->previewAudioDevice();
    m_device->clear();
    m_device->addItem(tr("System default"), QByteArray());
    for (const AudioOutputDevice &device : CaptureSources::audioOutputs())
        m_device->addItem(device.description, device.id);
    m_device->setCurrentIndex(qMax(0, m_device->findData(chosen)));
}

void AudioMixerPanel::retranslateStrip(Strip &strip)
{
    QString name;
    switch (strip.kind) {
    case StripKind::Channel:
        name = tr("Channel %1").arg(strip.id + 1);
        break;
    case StripKind::Program:
        name = tr("Program");
        break;
    case StripKind::Overlay:
        name = strip.fileName.isEmpty() ? tr("Overlay %1").arg(strip.id) : strip.fileName;
        break;
    }
    strip.name->setText(strip.kind == StripKind::Overlay
                            ? strip.name->fontMetrics().elidedText(name, Qt::ElideMiddle, 90)
                            : name);
    strip.name->setToolTip(name);
    // Meters by fixed English names as well as translated ones: scripts read the levels.
    if (strip.kind == StripKind::Channel) {
        strip.meter->setAccessibleName(QStringLiteral("Channel %1 level").arg(strip.id + 1));
        strip.fader->setAccessibleName(tr("Channel %1 volume").arg(strip.id + 1));
        strip.mute->setAccessibleName(tr("Channel %1 mute").arg(strip.id + 1));
    } else if (strip.kind == StripKind::Program) {
        strip.meter->setAccessibleName(QStringLiteral("Program level"));
        strip.fader->setAccessibleName(tr("Program volume"));
        strip.mute->setAccessibleName(tr("Program mute"));
    } else {
        strip.meter->setAccessibleName(QStringLiteral("Overlay %1 level").arg(strip.id));
        strip.fader->setAccessibleName(tr("%1 volume").arg(name));
        strip.mute->setAccessibleName(tr("%1 mute").arg(name));
        strip.onProgram->setText(tr("On program"));
        strip.onProgram->setAccessibleName(tr("%1 on program").arg(name));
    }
    strip.mute->setText(tr("Mute"));
    strip.fader->setToolTip(strip.kind == StripKind::Channel
                                ? tr("What you hear of this channel (the program has its own "
                                     "level)")
                                : QString());
}

void AudioMixerPanel::retranslateUi()
{
    for (Strip *strip : m_channelStrips)
        retranslateStrip(*strip);
    for (Strip *strip : m_overlayStrips)
        retranslateStrip(*strip);
    retranslateStrip(*m_programStrip);
    m_deviceLabel->setText(tr("Preview output:"));
    m_device->setAccessibleName(tr("Preview output device"));
    m_refreshDevices->setText(tr("Refresh"));
    m_refreshDevices->setAccessibleName(tr("Refresh output devices"));
    if (m_device->count() > 0)
        m_device->setItemText(0, tr("System default"));
}

void AudioMixerPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

} // namespace selvane
