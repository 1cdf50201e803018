#pragma once

// The Text Overlay dock: the texts over the program (at most ten), each row with its on/off box
// and its words, and Add / Edit / Duplicate / Remove. Adding and editing go through the text
// effect dialog; every change goes to the engine at once. The list follows the engine, so texts
// another caller shows (a schedule) appear too; those belong to their owner and are listed
// greyed, not edited here.
//
// GUI thread only. Emits nothing: the engine's overlaysChanged is the news of every change.

#include "engine/EngineTypes.h"

#include <QWidget>

class QLabel;
class QListView;
class QPushButton;

namespace selvane {

class Engine;
class OverlayListModel;

class TextOverlayPanel : public QWidget
{
    Q_OBJECT

public:
    TextOverlayPanel(Engine *engine, QWidget *parent = nullptr);

    // The id of the chosen row, -1 when none.
    int selectedId() const;
    void select(int id);

public slots:
    // Each opens the text effect dialog (modal) or, at the limit, a box saying why not.
    void addText();
    void editSelected();
    void duplicateSelected();
    void removeSelected();

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateButtons();
    bool editable(int id) const;
    const TextOverlayData *find(int id) const;
    bool roomForOne();
    // Runs the dialog on `text`; true with the edited record in `text` when accepted.
    bool runDialog(TextOverlayData &text);
    void refuse(const QString &message);
    void retranslateUi();

    Engine *m_engine = nullptr;
    OverlayListModel *m_model = nullptr; // the engine's texts, in its order
    int m_keptSelection = -1;

    QLabel *m_heading = nullptr;
    QListView *m_list = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_edit = nullptr;
    QPushButton *m_duplicate = nullptr;
    QPushButton *m_remove = nullptr;
};

} // namespace selvane
