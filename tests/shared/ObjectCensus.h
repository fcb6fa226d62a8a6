// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef OBJECTCENSUS_H
#define OBJECTCENSUS_H

#include <QList>
#include <QObject>
#include <QtGlobal>

/**
 * Counts the objects that are made during its life, and knows which of them still live.
 *
 * It shows what no pointer leads to: an element without an owner, or that an address is of an
 * object that has gone. Only one can exist at a time.
 */
class ObjectCensus
{
public:
    ObjectCensus();
    ~ObjectCensus();
    Q_DISABLE_COPY_MOVE(ObjectCensus)

    /// Whether @p address is of a living object made since the start; it is not dereferenced.
    bool isAlive(const QObject* address) const;

    /// The living objects of the class @p T in the order of their making.
    template <typename T> QList<T*> living() const
    {
        QList<T*> result;
        const QList<QObject*> objects = livingObjects();
        for (QObject* object : objects) {
            if (auto* candidate = qobject_cast<T*>(object))
                result += candidate;
        }
        return result;
    }

    /// How many objects were made since the start, whatever became of them.
    int madeCount() const;

    /// Deletes the living objects of the class @p T, whoever owns them.
    template <typename T> void deleteLiving() const
    {
        for (QList<T*> rest = living<T>(); !rest.isEmpty(); rest = living<T>())
            delete rest.constFirst();
    }

private:
    static QList<QObject*> livingObjects();
};

#endif
