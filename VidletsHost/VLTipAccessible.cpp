// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipAccessible.h"

#include "VLSceneAccessible.h"
#include "VLTipText.h"
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QAccessible>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

int serverCount = 0;

QAccessibleInterface* makeInterface(const QString& className, QObject* object)
{
    if (className == "Vidlets::VLWidget"_L1) {
        if (auto* popup = qobject_cast<VLWidget*>(object))
            return new VLTipAccessible(popup);
    } else if (className == "Vidlets::VLView"_L1) {
        if (auto* view = qobject_cast<VLView*>(object))
            return new VLSceneAccessible(view);
    }
    return nullptr;
}

} // namespace

VLTipAccessible::VLTipAccessible(VLWidget* popup)
    : QAccessibleWidget(popup, QAccessible::ToolTip)
{
}

void VLTipAccessible::beginServing()
{
    if (serverCount++ == 0)
        QAccessible::installFactory(makeInterface);
}

void VLTipAccessible::stopServing()
{
    if (--serverCount == 0)
        QAccessible::removeFactory(makeInterface);
}

QAccessible::Role VLTipAccessible::role() const
{
    VLWidget* tip = popup();
    if (!tip || !tip->view() || !tip->view()->reserved())
        return QAccessible::ToolTip;
    return tip->isWindow() ? QAccessible::Window : QAccessible::Grouping;
}

QString VLTipAccessible::text(QAccessible::Text kind) const
{
    VLWidget* tip = popup();
    const VLXmlElement* content = tip && tip->view() ? tip->view()->content() : nullptr;
    if (content && kind == QAccessible::Name)
        return TipText::title(*content, tip->manager());
    if (content && kind == QAccessible::Description)
        return TipText::text(*content, tip->manager());
    return QAccessibleWidget::text(kind);
}

int VLTipAccessible::childCount() const
{
    VLWidget* tip = popup();
    return tip && tip->view() ? 1 : 0;
}

// The window container in between has nothing to say.
QAccessibleInterface* VLTipAccessible::child(int index) const
{
    VLWidget* tip = popup();
    return tip && index == 0 ? QAccessible::queryAccessibleInterface(tip->view()) : nullptr;
}

int VLTipAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    VLWidget* tip = popup();
    return tip && child && child->object() == tip->view() ? 0 : -1;
}

QAccessibleInterface* VLTipAccessible::childAt(int x, int y) const
{
    return rect().contains(x, y) ? child(0) : nullptr;
}

QAccessibleInterface* VLTipAccessible::focusChild() const
{
    const QAccessibleInterface* scene = child(0);
    return scene ? scene->focusChild() : nullptr;
}

VLWidget* VLTipAccessible::popup() const
{
    return qobject_cast<VLWidget*>(object());
}

} // namespace Vidlets
