// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORPREVIEWTREE_H
#define AUTHORPREVIEWTREE_H

#include "AuthorEditor.h"
#include "AuthorFinding.h"
#include "AuthorTipList.h"

#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QWidget>

class QLineEdit;
class QTreeView;

namespace Vidlets {

/**
 * The packages with their keys, and below both what check finds in them; with a filter.
 */
class AuthorPreviewTree : public QWidget
{
    Q_OBJECT

public:
    explicit AuthorPreviewTree(QWidget* parent = nullptr);
    ~AuthorPreviewTree() override;

    /// Shows @p list. The choice, what is folded and what is scrolled stay as they are.
    void setTips(const AuthorTipList& list);
    /// Shows @p findings at the tips and packages that they are about.
    void setFindings(const QList<AuthorFinding>& findings);

    /// Chooses the first tip @p key; the very first one where the key is empty. Returns whether
    /// there is one.
    bool choose(const QString& key);

Q_SIGNALS:
    /// Another tip is chosen.
    void tipChosen(const QString& root, const QString& key);
    /// The user wants to see this place.
    void placeActivated(const Vidlets::AuthorPlace& place);

private:
    Q_DISABLE_COPY_MOVE(AuthorPreviewTree)

    void fill();
    QStandardItem* packageItem(const AuthorListedPackage& package) const;
    void addFinding(QStandardItem* parent, const AuthorFinding& finding) const;
    QStandardItem* find(const QString& root, const QString& key, bool anyRoot) const;
    void select(const QStandardItem* item);
    void currentChanged(const QModelIndex& index);
    void clicked(const QModelIndex& index);

    AuthorTipList m_list;
    QList<AuthorFinding> m_findings;
    QString m_root;
    QString m_key;
    QLineEdit* m_filter;
    QTreeView* m_view;
    QStandardItemModel m_model;
    QSortFilterProxyModel m_proxy;
    bool m_isFilling = false;
};

} // namespace Vidlets

#endif
