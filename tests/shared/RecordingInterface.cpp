// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "RecordingInterface.h"

RecordingInterface::RecordingInterface(VLContext& context, const QStringList& dataPaths,
                                       Vidlets::VLIndex* index)
    : VLInterface(context, dataPaths, index)
{
}

QStringList RecordingInterface::messages(Vidlets::VLMessageType type) const
{
    QStringList texts;
    for (const Message& message : recordedMessages) {
        if (message.type == type)
            texts += message.text;
    }
    return texts;
}

QWidget* RecordingInterface::createWindow()
{
    ++windowsAskedFor;
    return windowToGive;
}

QString RecordingInterface::keyForObject(QObject* object)
{
    objectsAskedForKey += object;
    return VLInterface::keyForObject(object);
}

bool RecordingInterface::openExternalResource(Vidlets::VLExternalResourceType type,
                                              const QString& resource)
{
    openedResources += {type, resource};
    return openResult;
}

void RecordingInterface::handleMessage(Vidlets::VLMessageType type, const QString& message)
{
    recordedMessages += {type, message};
}

QString RecordingInterface::translateString(const QString& text, const QString& context)
{
    return VLInterface::translateString(text, context);
}

QString RecordingInterface::shortCutForObject(const QString& key, QObject* object,
                                              const QString& shortcut)
{
    shortcutRequests += {key, object, shortcut};
    return shortcutToGive.isNull() ? shortcut : shortcutToGive;
}
