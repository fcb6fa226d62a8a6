// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTipIndex.h"

#include <QElapsedTimer>
#include <QFileInfo>

namespace Vidlets {

namespace {

/// From a control file to its package: the name of the file and the control directory.
constexpr int kStepsToPackage = 2;
constexpr double kNsPerMs = 1e6;

} // namespace

AuthorTipIndex::AuthorTipIndex(VLContext* context, const QStringList& roots)
    : VLIndex(context, {})
    , m_roots(roots.cbegin(), roots.cend())
{
}

void AuthorTipIndex::setTip(const QString& root, const QString& key)
{
    m_root = root;
    m_key = key;
}

double AuthorTipIndex::lookupMs() const
{
    return static_cast<double>(m_lookupNs) / kNsPerMs;
}

void AuthorTipIndex::startLookup()
{
    m_lookupNs = 0;
    m_wasFound = false;
}

bool AuthorTipIndex::wasFound() const
{
    return m_wasFound;
}

VLXmlElement* AuthorTipIndex::retrieve(const QString& /*key*/, const QLocale& locale, QString& path,
                                       int& depth, VLXmlElement*& root)
{
    QElapsedTimer timer;
    timer.start();
    VLXmlElement* element = nullptr;
    const QStringList files = m_files.value(m_root);
    // As in the library the file that was found last goes first.
    for (auto file = files.crbegin(); file != files.crend() && !element; ++file) {
        element = load(m_key, *file, locale, root);
        if (!element)
            continue;
        depth = kStepsToPackage;
        path = QFileInfo(*file).absolutePath();
    }
    m_lookupNs += timer.nsecsElapsed();
    m_wasFound = m_wasFound || element;
    return element;
}

void AuthorTipIndex::indexControlFile(const QString& file, const QString& root)
{
    if (m_roots.contains(root) && !m_files[root].contains(file))
        m_files[root].append(file);
    VLIndex::indexControlFile(file, root);
}

} // namespace Vidlets

#include "moc_AuthorTipIndex.cpp"
