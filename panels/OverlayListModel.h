#pragma once

// The engine's text overlays, or its image and video overlays, as a list model: one row per
// overlay in the engine's order. The engine holds the truth; the model follows its
// overlaysChanged (the same overlays in the same order change in place, anything else resets
// the rows) and sends a ticked text's box to the engine, whose answer comes back the same way.
// An overlay a schedule shows is listed greyed: a text can be neither chosen nor ticked, an image
// or video can be chosen to be looked at.
//
// Roles: the row's words, its tool tip (the whole text or the file), the check state (texts:
// shown or not), the foreground (grey for a schedule's) and IdRole (the overlay's id).
//
// GUI thread only. Emits the model's own signals.

#include "engine/EngineTypes.h"

#include <QAbstractListModel>

namespace selvane {

class Engine;

class OverlayListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum class Kind
    {
        Text,
        Media,
    };
    enum Role
    {
        IdRole = Qt::UserRole,
    };

    OverlayListModel(Engine *engine, Kind kind, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    int idAt(int row) const;
    int rowOf(int id) const;
    QModelIndex indexOf(int id) const { return index(rowOf(id)); }
    // The records as the engine had them at the last change.
    const QList<TextOverlayData> &texts() const { return m_texts; }
    const QList<MediaOverlayRecord> &media() const { return m_media; }
    // Whether the operator may edit this overlay (not a schedule's).
    static bool editable(int id);

    // The rows' words again, in the language now chosen.
    void retranslate();

private:
    void refresh();
    QString words(int row) const;

    Engine *m_engine = nullptr;
    Kind m_kind;
    QList<TextOverlayData> m_texts;
    QList<MediaOverlayRecord> m_media;
};

} // namespace selvane
