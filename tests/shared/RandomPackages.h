// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef RANDOMPACKAGES_H
#define RANDOMPACKAGES_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <random>

/**
 * Makes control files and key data files at random: every way to write one that comes to mind, good
 * and broken.
 *
 * The same seed gives the same files.
 */
class RandomPackages
{
public:
    explicit RandomPackages(quint32 seed);

    /// The keys and locales that files are made of; lookups ask for them.
    static QStringList keys();
    static QStringList locales();

    /// The bytes of a control file.
    QByteArray controlFile();
    /// The bytes of a key data file.
    QByteArray keyDataFile();
    /// A copy of @p content with a fault at a random place.
    QByteArray broken(QByteArray content);

    /// A number from 0 on and below @p end.
    int number(int end);
    /// Whether something of that many per cent is the case.
    bool chance(int perCent);

private:
    QString pick(const QStringList& choices);
    QString prolog();
    QString documentType();
    QString root(const QString& children);
    QString child(int depth);
    QString tip(int depth);
    QString attributes();
    QString content(int depth);
    QString text();
    QString filling();
    QByteArray encoded(const QString& document);

    std::mt19937 m_engine;
    QString m_encodingName;
    bool m_hasEntities = false;
};

#endif
