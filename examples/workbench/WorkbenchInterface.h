// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_WORKBENCHINTERFACE_H
#define WORKBENCH_WORKBENCHINTERFACE_H

#include "PinnedTips.h"
#include <Vidlets/VLInterface.h>

class QMainWindow;

namespace Workbench {

/// Dynamic property with the key of a widget, where its object name is taken or tells nothing.
inline constexpr const char* kKeyProperty = "vidletKey";

/// What the library asks this program.
class WorkbenchInterface : public Vidlets::VLInterface
{
    Q_OBJECT

public:
    /// @p window owns the actions with the shortcuts, and takes in the tips that are pinned.
    WorkbenchInterface(VLContext& context, const QStringList& dataPaths, QMainWindow* window);

    PinnedTips& pinnedTips();

    QWidget* createWindow() override;
    QString keyForObject(QObject* object) override;
    bool openExternalResource(Vidlets::VLExternalResourceType type,
                              const QString& resource) override;
    void handleMessage(Vidlets::VLMessageType type, const QString& message) override;
    QString shortCutForObject(const QString& key, QObject* object,
                              const QString& shortcut) override;

Q_SIGNALS:
    void messageRaised(const QString& label, const QString& message);

private:
    bool openPackageFile(const QString& relativePath);
    QString findPackageFile(const QString& relativePath) const;

    QStringList m_dataPaths;
    QMainWindow* m_window;
    PinnedTips m_pinnedTips;
};

} // namespace Workbench

#endif
