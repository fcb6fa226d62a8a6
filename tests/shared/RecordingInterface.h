// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef RECORDINGINTERFACE_H
#define RECORDINGINTERFACE_H

#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

/// A host interface that writes down how it is called, and answers as its members say.
class RecordingInterface : public Vidlets::VLInterface
{
public:
    struct Message
    {
        Vidlets::VLMessageType type;
        QString text;
    };
    struct Resource
    {
        Vidlets::VLExternalResourceType type;
        QString locator;
    };
    struct ShortcutRequest
    {
        QString key;
        QObject* object;
        QString shortcut;
    };

    explicit RecordingInterface(VLContext& context, const QStringList& dataPaths = {},
                                Vidlets::VLIndex* index = nullptr);

    /// The texts of the recorded messages of @p type.
    QStringList messages(Vidlets::VLMessageType type) const;

    QWidget* createWindow() override;
    QString keyForObject(QObject* object) override;
    bool openExternalResource(Vidlets::VLExternalResourceType type,
                              const QString& resource) override;
    void handleMessage(Vidlets::VLMessageType type, const QString& message) override;
    QString translateString(const QString& text, const QString& context) override;
    QString shortCutForObject(const QString& key, QObject* object,
                              const QString& shortcut) override;

    QList<Message> recordedMessages;
    QList<Resource> openedResources;
    QList<ShortcutRequest> shortcutRequests;
    QList<QPointer<QObject>> objectsAskedForKey;
    int windowsAskedFor = 0;

    QWidget* windowToGive = nullptr; ///< Not owned.
    bool openResult = true;
    QString shortcutToGive; ///< Given instead of the content's where it is not null.
};

#endif
