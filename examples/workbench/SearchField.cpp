// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "SearchField.h"

#include "WorkbenchInterface.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QLocale>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLKeyTableIndex.h>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

constexpr int kMaxHits = 8;
constexpr int kFieldWidthPx = 220;
constexpr int kListWidthPx = 380;
constexpr int kHitKeyRole = Qt::UserRole;
constexpr int kHitHtmlRole = Qt::UserRole + 1;

/// Paints the HTML of an entry.
class HitDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        const bool isSelected = option.state & QStyle::State_Selected;
        painter->fillRect(option.rect, isSelected ? option.palette.highlight() : Qt::NoBrush);
        QTextDocument document;
        fill(document, option, index);
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette = option.palette;
        context.palette.setColor(QPalette::Text,
                                 isSelected ? option.palette.highlightedText().color()
                                            : option.palette.text().color());
        painter->save();
        painter->translate(option.rect.topLeft());
        painter->setClipRect(QRect(QPoint(), option.rect.size()));
        document.documentLayout()->draw(painter, context);
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QTextDocument document;
        fill(document, option, index);
        return {qRound(document.textWidth()), qRound(document.size().height())};
    }

private:
    static void fill(QTextDocument& document, const QStyleOptionViewItem& option,
                     const QModelIndex& index)
    {
        QTextOption text;
        text.setTextDirection(option.direction);
        text.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        document.setDefaultTextOption(text);
        document.setDefaultFont(option.font);
        document.setHtml(index.data(kHitHtmlRole).toString());
        document.setTextWidth(option.widget ? option.widget->width() - 4 : kListWidthPx);
    }
};

} // namespace

SearchField::SearchField(QWidget* parent)
    : QLineEdit(parent)
    , m_list(new QListWidget)
{
    setObjectName(u"search"_s);
    setPlaceholderText(tr("Search tips (Ctrl+K)"));
    setClearButtonEnabled(true);
    setFixedWidth(kFieldWidthPx);
    m_list->setObjectName(u"searchHits"_s);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setItemDelegate(new HitDelegate(m_list));
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->hide();
    connect(this, &QLineEdit::textEdited, this, &SearchField::find);
    connect(this, &QLineEdit::returnPressed, this, &SearchField::showCurrent);
    connect(m_list, &QListWidget::itemClicked, this, &SearchField::showCurrent);
}

void SearchField::attach(WorkbenchInterface& vidlets, Vidlets::VLKeyTableIndex& index)
{
    m_vidlets = &vidlets;
    m_index = &index;
    // On top of what lies beneath the tool bar.
    m_list->setParent(window());
    const auto findAnew = [this] {
        if (m_list->isVisible()) {
            find();
        }
    };
    connect(m_index, &Vidlets::VLKeyTableIndex::searchBuilt, this, findAnew);
    connect(m_index, &Vidlets::VLKeyTableIndex::changed, this, findAnew);
}

void SearchField::find()
{
    m_list->clear();
    // As the manager does: what has no tip in the language of the user has one in another.
    QStringList keys;
    for (const Vidlets::contextKey setting : {Vidlets::ckLocale, Vidlets::ckFallbackLocale}) {
        const QString name = m_vidlets->context().get(setting, u"en_US"_s).toString();
        const QList<Vidlets::VLSearchHit> hits = m_index->search(text(), QLocale(name), kMaxHits);
        for (const Vidlets::VLSearchHit& hit : hits) {
            if (m_list->count() < kMaxHits && !keys.contains(hit.key)) {
                keys += hit.key;
                addHit(hit);
            }
        }
    }
    m_list->setCurrentRow(0);
    placeList();
}

void SearchField::addHit(const Vidlets::VLSearchHit& hit)
{
    const QString title =
        hit.title.isEmpty() ? hit.key : m_vidlets->manager()->interpolate(hit.title);
    auto* item = new QListWidgetItem(title, m_list);
    item->setData(kHitKeyRole, hit.key);
    item->setData(kHitHtmlRole,
                  u"<p><b>%1</b><br>%2</p>"_s.arg(title.toHtmlEscaped(),
                                                  m_vidlets->manager()->interpolate(hit.snippet)));
}

void SearchField::placeList()
{
    if (m_list->count() == 0) {
        m_list->hide();
        return;
    }
    const QRect field(mapTo(window(), QPoint()), size());
    const int x = isRightToLeft() ? field.left() : field.right() + 1 - kListWidthPx;
    m_list->setGeometry(qBound(0, x, window()->width() - kListWidthPx), field.bottom() + 2,
                        kListWidthPx, 0);
    int height = 2 * m_list->frameWidth();
    for (int row = 0; row < m_list->count(); ++row) {
        height += m_list->sizeHintForRow(row);
    }
    m_list->resize(kListWidthPx, qMin(height, window()->height() - field.bottom() - 2));
    m_list->raise();
    m_list->show();
}

void SearchField::step(int rows)
{
    if (m_list->count() > 0) {
        m_list->setCurrentRow(qBound(0, m_list->currentRow() + rows, m_list->count() - 1));
    }
}

void SearchField::showCurrent()
{
    const QListWidgetItem* item = m_list->isVisible() ? m_list->currentItem() : nullptr;
    if (!item) {
        return;
    }
    m_list->hide();
    selectAll();
    m_vidlets->access()->showTip(item->data(kHitKeyRole).toString(), window());
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Down:
        step(1);
        return;
    case Qt::Key_Up:
        step(-1);
        return;
    case Qt::Key_Escape:
        m_list->hide();
        clear();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchField::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason) {
        m_list->hide();
    }
    QLineEdit::focusOutEvent(event);
}

} // namespace Workbench

#include "moc_SearchField.cpp"
