// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLContentRoots.h"

#include <QFileInfo>
#include <QLibraryInfo>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// More steps up than any path has; links that lead to each other end here.
constexpr int kMaxSteps = 4096;

} // namespace

VLContentRoots::VLContentRoots(const QStringList& paths)
    : m_qtModules(QFileInfo(QLibraryInfo::path(QLibraryInfo::QmlImportsPath)).canonicalFilePath())
{
    add(paths);
}

void VLContentRoots::add(const QStringList& paths)
{
    static std::atomic<quint64> lastRevision = 0;
    m_revision = ++lastRevision;
    for (const QString& path : paths) {
        const QString root = QFileInfo(path).canonicalFilePath();
        if (root.isEmpty())
            m_absent.append(path);
        else
            m_roots.insert(root);
    }
}

void VLContentRoots::lookAgain()
{
    const bool isBack = std::any_of(m_absent.cbegin(), m_absent.cend(),
                                    [](const QString& path) { return QFileInfo::exists(path); });
    if (isBack)
        add(std::exchange(m_absent, {}));
}

quint64 VLContentRoots::revision() const
{
    return m_revision;
}

bool VLContentRoots::isComplete() const
{
    return m_absent.isEmpty();
}

bool VLContentRoots::contains(const QString& path) const
{
    if (path.startsWith(":/"_L1))
        return true;
    const QString place = resolved(path);
    if (isBelow(m_qtModules, place))
        return true;
    // By the directories above, of which there are few, and not by the roots.
    qsizetype length = place.size();
    while (length > 0 && !m_roots.contains(place.left(length)))
        length = place.lastIndexOf(u'/', length - 1);
    return length > 0 || (!place.isEmpty() && m_roots.contains(u"/"_s));
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
