#include "panels/EncodeProfilesBox.h"

#include "media/StoredSettings.h"
#include "output/EncodeProfiles.h"
#include "panels/EncodeProfileDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace selvane {

namespace {

enum Column
{
    NameColumn,
    PictureColumn,  // size and frame rate
    EncodingColumn, // bitrate, preset, adaptive bitrate, multiview
    ColumnCount
};

} // namespace

EncodeProfilesBox::EncodeProfilesBox(QWidget *parent) : QGroupBox(parent)
{
    setObjectName("encodeProfilesBox");
    setAccessibleName("Encode Profiles");
    m_adaptive = new QCheckBox(this);
    m_adaptive->setAccessibleName("Adaptive Bitrate");
    m_floor = new QSpinBox(this);
    m_floor->setAccessibleName("Adaptive Bitrate Floor");
    m_floor->setRange(5, 100);
    m_floor->setSuffix(QStringLiteral(" %"));
    m_hint = new QLabel(this);
    m_hint->setWordWrap(true);
    m_hint->setStyleSheet("color:#9aa0aa;font-size:11px;");
    m_table = new QTableWidget(0, ColumnCount, this);
    m_table->setAccessibleName("Encode Profile List");
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    // Three columns, the last one wrapping: the output settings dock stays narrow.
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(EncodingColumn, QHeaderView::Stretch);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_table->setWordWrap(true);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setMinimumHeight(70);
    m_table->setMaximumHeight(140);
    m_add = new QPushButton(this);
    m_add->setAccessibleName("Add Profile");
    m_edit = new QPushButton(this);
    m_edit->setAccessibleName("Edit Profile");
    m_remove = new QPushButton(this);
    m_remove->setAccessibleName("Remove Profile");

    auto *adaptiveRow = new QHBoxLayout;
    adaptiveRow->addWidget(m_adaptive);
    adaptiveRow->addWidget(m_floor);
    adaptiveRow->addStretch(1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_edit);
    buttons->addWidget(m_remove);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(adaptiveRow);
    layout->addWidget(m_table);
    layout->addLayout(buttons);
    layout->addWidget(m_hint);

    load();
    retranslateUi();

    const auto defaultEdited = [this] {
        m_floor->setEnabled(m_adaptive->isEnabled() && m_adaptive->isChecked());
        if (m_loading)
            return;
        save();
        emit changed();
    };
    connect(m_adaptive, &QCheckBox::toggled, this, defaultEdited);
    connect(m_floor, &QSpinBox::valueChanged, this, defaultEdited);
    connect(m_add, &QPushButton::clicked, this, [this] { edit(-1); });
    connect(m_edit, &QPushButton::clicked, this, [this] { edit(m_table->currentRow()); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row, int) { edit(row); });
    connect(m_remove, &QPushButton::clicked, this, [this] {
        const int row = m_table->currentRow();
        if (row < 0 || row >= m_profiles.size())
            return;
        m_profiles.removeAt(row);
        save();
        showProfiles();
        emit changed();
    });
}

QStringList EncodeProfilesBox::names() const
{
    QStringList names;
    for (const EncodeProfile &profile : m_profiles)
        names << profile.name;
    return names;
}

bool EncodeProfilesBox::adaptiveBitrate() const
{
    return m_adaptive->isChecked();
}

int EncodeProfilesBox::adaptiveFloorPercent() const
{
    return m_floor->value();
}

void EncodeProfilesBox::setProfiles(const QList<EncodeProfile> &profiles)
{
    m_profiles = profiles;
    save();
    showProfiles();
}

void EncodeProfilesBox::setRunning(bool running)
{
    for (QWidget *w : std::initializer_list<QWidget *>{m_adaptive, m_add, m_edit, m_remove})
        w->setEnabled(!running);
    m_floor->setEnabled(!running && m_adaptive->isChecked());
}

void EncodeProfilesBox::fillChoice(QComboBox *combo, const QStringList &names,
                                   const QString &current)
{
    const QSignalBlocker quiet(combo);
    const QString chosen =
        profiles::isDefault(current) ? QString::fromLatin1(profiles::kDefaultName) : current;
    combo->clear();
    combo->addItem(tr("default"), QString::fromLatin1(profiles::kDefaultName));
    for (const QString &name : names)
        combo->addItem(name, name);
    if (combo->findData(chosen) < 0)
        combo->addItem(tr("%1 (missing)").arg(chosen), chosen);
    combo->setCurrentIndex(combo->findData(chosen));
}

void EncodeProfilesBox::load()
{
    m_loading = true;
    StoredSettings s;
    m_adaptive->setChecked(s.value("output/adaptiveBitrate", false).toBool());
    m_floor->setValue(s.value("output/adaptiveFloorPercent", 30).toInt());
    m_floor->setEnabled(m_adaptive->isChecked());
    m_profiles.clear();
    s.beginGroup("output/profiles");
    QList<int> order;
    for (const QString &group : s.childGroups())
        order << group.toInt();
    std::sort(order.begin(), order.end());
    for (int index : order) {
        s.beginGroup(QString::number(index));
        EncodeProfile p;
        p.name = s.value("name").toString();
        const QSize size(s.value("width", 0).toInt(), s.value("height", 0).toInt());
        p.size = size.isEmpty() ? QSize() : size;
        p.fps = s.value("fps", 0).toDouble();
        p.bitrateKbps = s.value("bitrateKbps", 0).toInt();
        p.qualityPreset = qBound(0, s.value("preset", 1).toInt(), 2);
        p.adaptive = s.value("adaptive", false).toBool();
        p.floorPercent = s.value("floorPercent", 30).toInt();
        p.multiview = s.value("multiview", false).toBool();
        m_profiles << p;
        s.endGroup();
    }
    s.endGroup();
    m_loading = false;
    showProfiles();
}

void EncodeProfilesBox::save()
{
    StoredSettings s;
    s.setValue("output/adaptiveBitrate", m_adaptive->isChecked());
    s.setValue("output/adaptiveFloorPercent", m_floor->value());
    s.remove("output/profiles");
    for (int i = 0; i < m_profiles.size(); ++i) {
        const EncodeProfile &p = m_profiles[i];
        const QString group = QStringLiteral("output/profiles/%1/").arg(i);
        s.setValue(group + "name", p.name);
        s.setValue(group + "width", p.size.isValid() ? p.size.width() : 0);
        s.setValue(group + "height", p.size.isValid() ? p.size.height() : 0);
        s.setValue(group + "fps", p.fps);
        s.setValue(group + "bitrateKbps", p.bitrateKbps);
        s.setValue(group + "preset", p.qualityPreset);
        s.setValue(group + "adaptive", p.adaptive);
        s.setValue(group + "floorPercent", p.floorPercent);
        s.setValue(group + "multiview", p.multiview);
    }
}

void EncodeProfilesBox::showProfiles()
{
    const int current = m_table->currentRow();
    m_table->setRowCount(int(m_profiles.size()));
    const QStringList presets{tr("Performance"), tr("Balanced"), tr("Quality")};
    for (int row = 0; row < m_profiles.size(); ++row) {
        const EncodeProfile &p = m_profiles[row];
        const bool sized = p.size.isValid() && !p.size.isEmpty();
        const QString size = sized
                                 ? QStringLiteral("%1×%2").arg(p.size.width()).arg(p.size.height())
                                 : tr("program's size");
        const QString rate = p.fps > 0 ? tr("%1 fps").arg(p.fps) : tr("program's rate");
        QStringList encoding{p.bitrateKbps > 0 ? tr("%1 kbit/s").arg(p.bitrateKbps)
                                               : tr("automatic bitrate"),
                             presets.value(p.qualityPreset)};
        encoding << (p.adaptive ? tr("adaptive down to %1 %").arg(p.floorPercent)
                                : tr("fixed bitrate"));
        if (p.multiview)
            encoding << tr("shows the multiview");
        const QStringList cells{p.name, size + "\n" + rate, encoding.join(QStringLiteral(" · "))};
        for (int column = 0; column < ColumnCount; ++column) {
            auto *item = m_table->item(row, column);
            if (!item) {
                item = new QTableWidgetItem;
                m_table->setItem(row, column, item);
            }
            item->setText(cells[column]);
            item->setToolTip(cells.join(QStringLiteral(" · ")));
        }
    }
    if (current >= 0 && current < m_profiles.size())
        m_table->selectRow(current);
}

void EncodeProfilesBox::edit(int row)
{
    const bool adding = row < 0 || row >= m_profiles.size();
    QList<EncodeProfile> others = m_profiles;
    EncodeProfile profile;
    if (!adding)
        profile = others.takeAt(row);
    EncodeProfileDialog dialog(this, profile, others, m_programFps);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (adding)
        m_profiles << dialog.profile();
    else
        m_profiles[row] = dialog.profile();
    save();
    showProfiles();
    m_table->selectRow(adding ? int(m_profiles.size()) - 1 : row);
    if (!adding && profile.name != m_profiles[row].name)
        emit renamed(profile.name, m_profiles[row].name);
    emit changed();
}

void EncodeProfilesBox::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QGroupBox::changeEvent(event);
}

void EncodeProfilesBox::retranslateUi()
{
    setTitle(tr("Encode profiles"));
    m_adaptive->setText(tr("Adaptive bitrate"));
    m_adaptive->setToolTip(tr("The default profile's bitrate steps down while a target is "
                              "congested, and back up once it keeps up"));
    m_floor->setPrefix(tr("down to "));
    m_table->setHorizontalHeaderLabels({tr("Name"), tr("Picture"), tr("Encoding")});
    m_add->setText(tr("Add…"));
    m_edit->setText(tr("Edit…"));
    m_remove->setText(tr("Remove"));
    m_hint->setText(tr("The Encoding settings above are the \"default\" profile. Each profile "
                       "named by the recording or a target is encoded once, with the encoder "
                       "and keyframe interval chosen above."));
    showProfiles();
}

} // namespace selvane
