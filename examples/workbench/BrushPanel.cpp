// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "BrushPanel.h"

#include "ColorButton.h"
#include "WorkbenchInterface.h"

#include <QAction>
#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

constexpr int kSliderWidthPx = 120;

QToolButton* buttonFor(QAction* action)
{
    auto* button = new QToolButton;
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    return button;
}

} // namespace

BrushPanel::BrushPanel(const Brush& brush, QAction* smaller, QAction* bigger, QWidget* parent)
    : QDockWidget(tr("Brush"), parent)
    , m_form(new QFormLayout)
{
    setObjectName(u"brush"_s);
    auto* contents = new QWidget(this);
    contents->setLayout(m_form);
    setWidget(contents);

    addColor(brush);
    addSize(brush, smaller, bigger);
    QSlider* opacity =
        addSlider(u"brush.opacity"_s, tr("Opacity"), u"%1 %"_s, 5, 100, brush.opacityPercent);
    connect(opacity, &QSlider::valueChanged, this, &BrushPanel::opacityChanged);
    QSlider* smoothing =
        addSlider(u"brush.smoothing"_s, tr("Smoothing"), u"%1 %"_s, 0, 100, brush.smoothingPercent);
    connect(smoothing, &QSlider::valueChanged, this, &BrushPanel::smoothingChanged);
    addMirror();
}

void BrushPanel::stepSize(int stepPx)
{
    m_size->setValue(m_size->value() + stepPx);
}

// The label of a row has the key of its control: resting on either gives the same tip.
QHBoxLayout* BrushPanel::addRow(const QString& key, const QString& text)
{
    auto* label = new QLabel(text);
    label->setProperty(kKeyProperty, key);
    auto* row = new QHBoxLayout;
    m_form->addRow(label, row);
    return row;
}

QSlider* BrushPanel::addSlider(const QString& key, const QString& text, const QString& unit,
                               int minimum, int maximum, int value)
{
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(key);
    slider->setRange(minimum, maximum);
    slider->setValue(value);
    slider->setMinimumWidth(kSliderWidthPx);

    auto* number = new QLabel(unit.arg(value));
    number->setMinimumWidth(number->fontMetrics().horizontalAdvance(unit.arg(maximum)));
    connect(slider, &QSlider::valueChanged, number,
            [number, unit](int newValue) { number->setText(unit.arg(newValue)); });

    QHBoxLayout* row = addRow(key, text);
    row->addWidget(slider);
    row->addWidget(number);
    return slider;
}

void BrushPanel::addSize(const Brush& brush, QAction* smaller, QAction* bigger)
{
    m_size = addSlider(u"brush.size"_s, tr("Size"), u"%1 px"_s, kMinimumBrushSizePx,
                       kMaximumBrushSizePx, brush.sizePx);
    connect(m_size, &QSlider::valueChanged, this, &BrushPanel::sizeChanged);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(buttonFor(smaller));
    buttons->addWidget(buttonFor(bigger));
    buttons->addStretch();
    m_form->addRow(QString(), buttons);
}

void BrushPanel::addColor(const Brush& brush)
{
    auto* button = new ColorButton(brush.color);
    button->setObjectName(u"brush.color"_s);
    connect(button, &ColorButton::colorPicked, this, &BrushPanel::colorPicked);
    QHBoxLayout* row = addRow(button->objectName(), tr("Colour"));
    row->addWidget(button);
    row->addStretch();
}

// Nobody has written about this control yet: it shows what happens with a key that has no content.
void BrushPanel::addMirror()
{
    auto* mirror = new QCheckBox(tr("Mirror"));
    mirror->setObjectName(u"tool.mirror"_s);
    connect(mirror, &QCheckBox::toggled, this, &BrushPanel::mirroredChanged);
    m_form->addRow(QString(), mirror);
}

} // namespace Workbench

#include "moc_BrushPanel.cpp"
