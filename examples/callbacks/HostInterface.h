// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef HOSTINTERFACE_H
#define HOSTINTERFACE_H

#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>

#include <QWidget>

/// Overrides each callback of the library.
class HostInterface : public Vidlets::VLInterface
{
    Q_OBJECT

public:
    HostInterface(VLContext& context, const QStringList& dataPaths, QWidget* window)
        : Vidlets::VLInterface(context, dataPaths, nullptr)
        , m_window(window)
    {
    }

    QString keyForObject(QObject* object) override;
    QString shortCutForObject(const QString& key, QObject* object,
                              const QString& shortcut) override;
    bool openExternalResource(Vidlets::VLExternalResourceType type,
                              const QString& resource) override;
    void handleMessage(Vidlets::VLMessageType type, const QString& message) override;
    QString translateString(const QString& text, const QString& context) override;
    QWidget* createWindow() override;

private:
    QWidget* m_window;
};

#endif
