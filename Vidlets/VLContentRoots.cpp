// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLContentRoots.h"

#include "VLIndex.h"
#include "VLSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// More steps up than any path has; links that lead to each other end here.
constexpr int kMaxSteps = 4096;

} // namespace

VLContentRoots::VLContentRoots(const QStringList& paths)
    : m_qtModules(QFileInfo(QLibraryInfo::path(QLibraryInfo::QmlImportsPath)).canonicalFilePath())
{
    for (const QString& path : paths) {
        const QString root = QFileInfo(path).canonicalFilePath();
        if (root.isEmpty())
            m_isComplete = false;
        else if (!m_roots.contains(root))
            m_roots.append(root);
    }
}

bool VLContentRoots::isComplete() const
{
    return m_isComplete;
}

QStringList VLContentRoots::pathsOf(const VLIndex* index)
{
    if (!index)
        return {};
    QStringList paths = index->packageRoots();
    const QString extraPath = Settings::extraComponentPath(index->context());
    if (!extraPath.isEmpty())
        paths.append(extraPath);
    return paths;
}

bool VLContentRoots::contains(const QString& path) const
{
    if (path.startsWith(":/"_L1))
        return true;
    const QString place = resolved(path);
    return isBelow(m_qtModules, place)
        || std::any_of(m_roots.cbegin(), m_roots.cend(),
                       [&place](const QString& root) { return isBelow(root, place); });
}

bool VLContentRoots::isOfQt(const QString& path) const
{
    return isBelow(m_qtModules, resolved(path));
}

QString VLContentRoots::relativeToQt(const QString& path) const
{
    const QString place = resolved(path);
    return isBelow(m_qtModules, place) ? place.mid(m_qtModules.size() + 1) : QString();
}

QString VLContentRoots::resolved(const QString& path)
{
    QFileInfo info(path);
    QString place = info.canonicalFilePath();
    for (int step = 0; place.isEmpty() && step < kMaxSteps; ++step) {
        // A dangling link leads to what may come to be at its end.
        info = QFileInfo(info.isSymLink() ? info.symLinkTarget() : info.absolutePath());
        place = info.canonicalFilePath();
    }
    return place;
}

bool VLContentRoots::isBelow(const QString& root, const QString& path)
{
    if (root.isEmpty() || !path.startsWith(root))
        return false;
    return path.size() == root.size() || root.endsWith(u'/') || path.at(root.size()) == u'/';
}

} // namespace Vidlets
