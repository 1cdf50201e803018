#include "panels/TextOverlayPanel.h"

#include "engine/Engine.h"
#include "panels/OverlayListModel.h"
#include "panels/TextEffectDialog.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace selvane {

TextOverlayPanel::TextOverlayPanel(Engine *engine, QWidget *parent)
    : QWidget(parent), m_engine(engine)
{
    setObjectName("textOverlayPanel");
    m_heading = new QLabel(this);
    m_heading->setWordWrap(true);
    m_model = new OverlayListModel(engine, OverlayListModel::Kind::Text, this);
    m_list = new QListView(this);
    m_list->setObjectName("textOverlayList");
    m_list->setModel(m_model);
    m_list->setMinimumHeight(90);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setUniformItemSizes(true);
    // On and off plainly told apart on the dark theme and on a chosen row: a dark box, or a
    // light one.
    m_list->setStyleSheet(
        "QListView::indicator { width:11px; height:11px; border:1px solid #8a909a; "
        "border-radius:2px; background:#17191d; }"
        "QListView::indicator:checked { background:#e6e8eb; border-color:#e6e8eb; }"
        "QListView::indicator:disabled { border-color:#555a63; }"
        "QListView::indicator:checked:disabled { background:#7a808a; }");
    m_add = new QPushButton(this);
    m_edit = new QPushButton(this);
    m_duplicate = new QPushButton(this);
    m_remove = new QPushButton(this);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_add, m_edit, m_duplicate, m_remove})
        buttons->addWidget(button);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);

    connect(m_add, &QPushButton::clicked, this, &TextOverlayPanel::addText);
    connect(m_edit, &QPushButton::clicked, this, &TextOverlayPanel::editSelected);
    connect(m_duplicate, &QPushButton::clicked, this, &TextOverlayPanel::duplicateSelected);
    connect(m_remove, &QPushButton::clicked, this, &TextOverlayPanel::removeSelected);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &TextOverlayPanel::updateButtons);
    // The chosen text stays chosen when the rows are laid out again.
    connect(m_model, &QAbstractItemModel::modelAboutToBeReset, this,
            [this] { m_keptSelection = selectedId(); });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        select(m_keptSelection);
        updateButtons();
    });
    connect(m_list, &QListView::doubleClicked, this, [this](const QModelIndex &index) {
        if (editable(m_model->idAt(index.row()))) {
            m_list->setCurrentIndex(index);
            editSelected();
        }
    });
    retranslateUi();
}

bool TextOverlayPanel::editable(int id) const
{
    return OverlayListModel::editable(id);
}

const TextOverlayData *TextOverlayPanel::find(int id) const
{
    for (const TextOverlayData &text : m_model->texts())
        if (text.id == id)
            return &text;
    return nullptr;
}

int TextOverlayPanel::selectedId() const
{
    return m_model->idAt(m_list->currentIndex().row());
}

void TextOverlayPanel::select(int id)
{
    const QModelIndex index = m_model->indexOf(id);
    if (index.isValid())
        m_list->setCurrentIndex(index);
}

void TextOverlayPanel::updateButtons()
{
    const bool mine = editable(selectedId());
    m_edit->setEnabled(mine);
    m_duplicate->setEnabled(mine);
    m_remove->setEnabled(mine);
}

bool TextOverlayPanel::roomForOne()
{
    const Problem full = m_engine->roomForTextOverlay();
    if (full)
        refuse(problemText(full));
    return !full;
}

bool TextOverlayPanel::runDialog(TextOverlayData &text)
{
    TextEffectDialog dialog(text, this);
    dialog.setProgramSize(m_engine->programSize());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    text = dialog.data();
    return true;
}

void TextOverlayPanel::addText()
{
    if (!roomForOne())
        return;
    TextOverlayData text;
    if (!runDialog(text))
        return;
    // Another caller may have filled the list while the dialog was open: the engine says.
    Problem problem;
    const int id = m_engine->addTextOverlay(text, &problem);
    if (problem)
        refuse(problemText(problem));
    else
        select(id);
}

void TextOverlayPanel::editSelected()
{
    const int id = selectedId();
    if (!editable(id))
        return;
    const TextOverlayData *found = find(id);
    if (!found)
        return;
    TextOverlayData text = *found;
    if (!runDialog(text))
        return;
    // Removed meanwhile: it comes back only when there is room for it.
    if (const Problem problem = m_engine->setTextOverlay(text)) {
        refuse(problemText(problem));
        return;
    }
    select(id);
}

void TextOverlayPanel::duplicateSelected()
{
    const int id = selectedId();
    if (!editable(id) || !roomForOne())
        return;
    Problem problem;
    const int copy = m_engine->duplicateTextOverlay(id, &problem);
    if (problem)
        refuse(problemText(problem));
    else
        select(copy);
}

void TextOverlayPanel::removeSelected()
{
    const int id = selectedId();
    if (editable(id))
        m_engine->removeTextOverlay(id);
}

void TextOverlayPanel::refuse(const QString &message)
{
    auto *box =
        new QMessageBox(QMessageBox::Warning, tr("Text Overlay"), message, QMessageBox::Ok, this);
    box->setObjectName("textOverlayMessage");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void TextOverlayPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void TextOverlayPanel::retranslateUi()
{
    m_heading->setText(tr("Texts over the program (at most %1). Tick a text to show it; "
                          "double-click it to edit.")
                           .arg(OverlayScene::kMaxTextOverlays));
    m_list->setAccessibleName(tr("Text overlays"));
    m_add->setText(tr("Add..."));
    m_add->setAccessibleName(tr("Add Text"));
    m_edit->setText(tr("Edit..."));
    m_edit->setAccessibleName(tr("Edit Text"));
    m_duplicate->setText(tr("Duplicate"));
    m_duplicate->setAccessibleName(tr("Duplicate Text"));
    m_remove->setText(tr("Remove"));
    m_remove->setAccessibleName(tr("Remove Text"));
    m_model->retranslate();
}

} // namespace selvane
