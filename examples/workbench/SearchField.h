// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_SEARCHFIELD_H
#define WORKBENCH_SEARCHFIELD_H

#include <QLineEdit>

class QListWidget;

namespace Vidlets {
class VLKeyTableIndex;
struct VLSearchHit;
} // namespace Vidlets

namespace Workbench {

class WorkbenchInterface;

/// Finds tips by their words. The list of what was found is beneath it; Enter shows a tip at its
/// control.
class SearchField : public QLineEdit
{
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

    /// @p vidlets and @p index must not go before this does.
    void attach(WorkbenchInterface& vidlets, Vidlets::VLKeyTableIndex& index);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void find();
    void addHit(const Vidlets::VLSearchHit& hit);
    void placeList();
    void step(int rows);
    void showCurrent();

    QListWidget* m_list;
    WorkbenchInterface* m_vidlets = nullptr;
    Vidlets::VLKeyTableIndex* m_index = nullptr;
};

} // namespace Workbench

#endif
