// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorPreviewTree.h"

#include "AuthorFiles.h"

#include <QFileInfo>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSet>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

enum Role : int {
    PackageRole = Qt::UserRole + 1,
    TipRole,
    FileRole,
    LineRole,
    ColumnRole
};

QString identityOf(const QModelIndex& index)
{
    return index.data(PackageRole).toString() + u'\n' + index.data(TipRole).toString();
}

template <typename Visitor>
void visit(const QAbstractItemModel& model, const QModelIndex& parent, Visitor visitor)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        visitor(index);
        visit(model, index, visitor);
    }
}

} // namespace

AuthorPreviewTree::AuthorPreviewTree(QWidget* parent)
    : QWidget(parent)
    , m_filter(new QLineEdit(this))
    , m_view(new QTreeView(this))
{
    m_filter->setObjectName(u"filter"_s);
    m_filter->setPlaceholderText(u"Filter keys and findings"_s);
    m_filter->setClearButtonEnabled(true);
    m_view->setObjectName(u"tree"_s);
    m_view->setHeaderHidden(true);
    m_view->setUniformRowHeights(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_proxy.setSourceModel(&m_model);
    m_proxy.setRecursiveFilteringEnabled(true);
    m_proxy.setAutoAcceptChildRows(true);
    m_proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_view->setModel(&m_proxy);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_filter);
    layout->addWidget(m_view);
    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_proxy.setFilterFixedString(text);
        if (!text.isEmpty())
            m_view->expandAll();
    });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &AuthorPreviewTree::currentChanged);
    connect(m_view, &QTreeView::clicked, this, &AuthorPreviewTree::clicked);
}

AuthorPreviewTree::~AuthorPreviewTree() = default;

void AuthorPreviewTree::setTips(const AuthorTipList& list)
{
    m_list = list;
    fill();
}

void AuthorPreviewTree::setFindings(const QList<AuthorFinding>& findings)
{
    m_findings = findings;
    fill();
}

void AuthorPreviewTree::fill()
{
    const QScopedValueRollback<bool> guard(m_isFilling, true);
    const int scrolled = m_view->verticalScrollBar()->value();
    QSet<QString> folded;
    visit(m_proxy, QModelIndex(), [this, &folded](const QModelIndex& index) {
        if (!m_view->isExpanded(index) && m_proxy.hasChildren(index))
            folded.insert(identityOf(index));
    });
    m_model.clear();
    for (const AuthorListedPackage& package : std::as_const(m_list.packages))
        m_model.appendRow(packageItem(package));
    visit(m_proxy, QModelIndex(), [this, &folded](const QModelIndex& index) {
        m_view->setExpanded(index, !folded.contains(identityOf(index)));
    });
    select(find(m_root, m_key, false));
    m_view->verticalScrollBar()->setValue(scrolled);
}

QStandardItem* AuthorPreviewTree::packageItem(const AuthorListedPackage& package) const
{
    auto* item = new QStandardItem(package.name);
    item->setData(package.canonicalPath, PackageRole);
    QFont font = item->font();
    font.setBold(true);
    item->setFont(font);
    QList<const AuthorFinding*> findings;
    for (const AuthorFinding& finding : m_findings) {
        const bool isOfPackage = AuthorFiles::isBelow(package.path, finding.file);
        const bool isOfNone = m_list.packages.size() == 1;
        if (isOfPackage || isOfNone)
            findings.append(&finding);
    }
    QList<QStandardItem*> tips;
    for (const AuthorListedTip& tip : package.tips) {
        auto* child = new QStandardItem(tip.key);
        child->setData(package.canonicalPath, PackageRole);
        child->setData(tip.key, TipRole);
        findings.removeIf([this, child, &tip](const AuthorFinding* finding) {
            const bool isHere = isIn(tip, *finding);
            if (isHere)
                addFinding(child, *finding);
            return isHere;
        });
        tips.append(child);
    }
    for (const AuthorFinding* finding : std::as_const(findings))
        addFinding(item, *finding);
    item->appendRows(tips);
    return item;
}

void AuthorPreviewTree::addFinding(QStandardItem* parent, const AuthorFinding& finding) const
{
    auto* item = new QStandardItem(u"[%1] %2"_s.arg(finding.rule, finding.message));
    item->setToolTip(
        u"%1:%2: %3: %4\n%5"_s.arg(finding.file, QString::number(finding.position.line),
                                   severityName(finding.severity), finding.message, finding.help));
    item->setData(parent->data(PackageRole), PackageRole);
    item->setData(parent->data(TipRole), TipRole);
    item->setData(QFileInfo(finding.file).absoluteFilePath(), FileRole);
    item->setData(finding.position.line, LineRole);
    item->setData(finding.position.column, ColumnRole);
    if (finding.severity == AuthorSeverity::Error)
        item->setForeground(QColor(0xe0, 0x40, 0x40));
    else if (finding.severity == AuthorSeverity::Warning)
        item->setForeground(QColor(0xc8, 0x7a, 0x10));
    parent->appendRow(item);
}

QStandardItem* AuthorPreviewTree::find(const QString& root, const QString& key, bool anyRoot) const
{
    for (int row = 0; row < m_model.rowCount(); ++row) {
        const QStandardItem* package = m_model.item(row);
        for (int i = 0; i < package->rowCount(); ++i) {
            QStandardItem* item = package->child(i);
            const bool isTip = item->data(FileRole).isNull();
            if (isTip && (anyRoot || item->data(PackageRole).toString() == root)
                && (key.isEmpty() || item->data(TipRole).toString() == key))
                return item;
        }
    }
    return nullptr;
}

bool AuthorPreviewTree::choose(const QString& key)
{
    const QStandardItem* item = find(QString(), key, true);
    if (!item)
        return false;
    select(item);
    m_view->scrollTo(m_view->currentIndex());
    return true;
}

void AuthorPreviewTree::select(const QStandardItem* item)
{
    if (item)
        m_view->setCurrentIndex(m_proxy.mapFromSource(item->index()));
}

void AuthorPreviewTree::currentChanged(const QModelIndex& index)
{
    const QString key = index.data(TipRole).toString();
    const QString root = index.data(PackageRole).toString();
    if (m_isFilling || key.isEmpty() || (key == m_key && root == m_root))
        return;
    m_key = key;
    m_root = root;
    Q_EMIT tipChosen(root, key);
}

void AuthorPreviewTree::clicked(const QModelIndex& index)
{
    if (!index.data(FileRole).isNull())
        Q_EMIT placeActivated({index.data(FileRole).toString(), index.data(LineRole).toInt(),
                               index.data(ColumnRole).toInt()});
}

} // namespace Vidlets

#include "moc_AuthorPreviewTree.cpp"
