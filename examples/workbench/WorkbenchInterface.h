// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_WORKBENCHINTERFACE_H
#define WORKBENCH_WORKBENCHINTERFACE_H

#include <VidletsHost/VLHostInterface.h>

namespace Workbench {

/// Dynamic property with the key of a widget, where its object name is taken or tells nothing.
inline constexpr const char* kKeyProperty = "vidletKey";

/// What a message of that severity is called.
QString labelFor(Vidlets::VLMessageType type);

/// What the library asks this program.
class WorkbenchInterface : public Vidlets::VLHostInterface
{
    Q_OBJECT

public:
    WorkbenchInterface(VLContext& context, const QStringList& dataPaths, Vidlets::VLIndex* index);

    /// Keeps pinned tips above other windows, those that are pinned later, too.
    void setPinnedOnTop(bool isOnTop);

    QWidget* createWindow() override;
    bool openExternalResource(Vidlets::VLExternalResourceType type,
                              const QString& resource) override;

private:
    bool openPackageFile(const QString& relativePath);
    QString findPackageFile(const QString& relativePath) const;

    QStringList m_dataPaths;
    bool m_isPinnedOnTop = false;
};

} // namespace Workbench

#endif
