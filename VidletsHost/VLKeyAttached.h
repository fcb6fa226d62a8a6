// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYATTACHED_H
#define VLKEYATTACHED_H

#include <QObject>
#include <QString>
#include <QtQml/qqml.h>

#include <optional>

class QQuickItem;

namespace Vidlets {

/**
 * The key of the tip of an item, which scenes write as "Vidlet.key".
 *
 * Internal to the host kit. An item without one counts as what it lies in; one whose key is empty
 * has no tip.
 */
class VLKeyAttached final : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Vidlet)
    QML_UNCREATABLE("Vidlet is for its attached property alone.")
    QML_ATTACHED(VLKeyAttached)

    Q_PROPERTY(QString key READ key WRITE setKey RESET resetKey NOTIFY keyChanged FINAL)

public:
    explicit VLKeyAttached(QObject* parent);
    ~VLKeyAttached() override;

    static VLKeyAttached* qmlAttachedProperties(QObject* object);

    /// Returns the key of @p item itself; nothing where it has none of its own.
    static std::optional<QString> keyOf(const QQuickItem* item);

    QString key() const;
    void setKey(const QString& key);
    void resetKey();

Q_SIGNALS:
    void keyChanged();

private:
    Q_DISABLE_COPY_MOVE(VLKeyAttached)

    std::optional<QString> m_key;
};

} // namespace Vidlets

#endif
