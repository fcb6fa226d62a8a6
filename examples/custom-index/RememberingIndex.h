// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef REMEMBERINGINDEX_H
#define REMEMBERINGINDEX_H

#include <Vidlets/VLIndex.h>

#include <QSet>

/// Remembers what does not exist, so that an unknown key costs a pass over the files only once.
class RememberingIndex : public Vidlets::VLIndex
{
    Q_OBJECT

public:
    using Vidlets::VLIndex::VLIndex;

    Vidlets::VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path,
                                    int& depth, Vidlets::VLXmlElement*& root) override
    {
        const QString question = locale.name() + QLatin1Char(' ') + key;
        if (m_misses.contains(question))
            return nullptr;
        Vidlets::VLXmlElement* element = VLIndex::retrieve(key, locale, path, depth, root);
        if (!element)
            m_misses.insert(question);
        return element;
    }

    void indexControlFile(const QString& file, const QString& packageRoot) override
    {
        m_misses.clear();
        VLIndex::indexControlFile(file, packageRoot);
    }

private:
    QSet<QString> m_misses;
};

#endif
