#pragma once

// The stream targets as the operator set them, as a table model: one row per target with its
// on/off box, kind, address (the key never shown: dots where it goes), the encode profile it
// takes (marked when no profile of that name exists any more) and the status the engine last
// reported for it. The model holds the list; the Output Settings panel stores it and
// builds the outputs from it.
//
// GUI thread only. Emits targetsEdited when the operator changed the list through the model
// (a box ticked, a target added, replaced or removed); setTargets and setStatus do not.

#include "panels/StreamTargetDialog.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

namespace selvane {

class StreamTargetModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        OnColumn,
        KindColumn,
        AddressColumn,
        ProfileColumn,
        StatusColumn,
        ColumnCount
    };

    explicit StreamTargetModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    const QList<StreamTargetEntry> &targets() const { return m_targets; }
    // A new list: statuses are forgotten.
    void setTargets(const QList<StreamTargetEntry> &targets);
    void addTarget(const StreamTargetEntry &target);
    void replaceTarget(int row, const StreamTargetEntry &target);
    void removeTarget(int row);
    // The status of the engine's target `index`: its position among the enabled targets with
    // an address, as the outputs were built.
    void setStatus(int index, const QString &status);
    // The named profiles there are: a target naming another one shows it missing.
    void setProfileNames(const QStringList &names);
    // The header's and the status words again, in the language now chosen.
    void retranslate();

signals:
    void targetsEdited();

private:
    QList<StreamTargetEntry> m_targets;
    QStringList m_status; // by row
    QStringList m_profiles;
};

} // namespace selvane
