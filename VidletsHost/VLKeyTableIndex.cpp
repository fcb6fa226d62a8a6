// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableIndex.h"

#include "VLEndOfApplication.h"
#include "VLKeyTableIndexPrivate.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QDeadlineTimer deadlineIn(int ms)
{
    return ms < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(ms);
}

} // namespace

VLKeyTableIndex::VLKeyTableIndex(VLContext* context, const QList<QString>& paths)
    : VLIndex(context, paths)
    , d(std::make_unique<VLKeyTableIndexPrivate>(this))
{
    // An index may be left behind, but no thread may outlive what it uses.
    EndOfApplication::add(this, [this] { d->goOnAlone(); });
    // A host may use QtSql itself.
    if (const QCoreApplication* application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &EndOfApplication::comeFirst);
}

VLKeyTableIndex::~VLKeyTableIndex()
{
    EndOfApplication::remove(this);
    d->stop();
    VLIndexHooks::deleteRecord(*this);
}

bool VLKeyTableIndex::isBuilt() const
{
    return d->isBuilt();
}

bool VLKeyTableIndex::waitUntilBuilt(int ms)
{
    return d->waitUntilBuilt(deadlineIn(ms));
}

void VLKeyTableIndex::refresh()
{
    d->live().refresh();
}

void VLKeyTableIndex::setWatching(bool on)
{
    d->live().setWatching(on);
}

bool VLKeyTableIndex::isWatching() const
{
    return d->live().isWatching();
}

void VLKeyTableIndex::setCacheFile(const QString& path)
{
    d->setCacheFile(path);
}

QString VLKeyTableIndex::cacheFile() const
{
    return d->cacheFile();
}

void VLKeyTableIndex::setLocaleChain(bool on)
{
    d->hasLocaleChain = on;
}

bool VLKeyTableIndex::localeChain() const
{
    return d->hasLocaleChain;
}

bool VLKeyTableIndex::clear()
{
    d->dropTable();
    return VLIndex::clear();
}

bool VLKeyTableIndex::remove()
{
    d->dropTable();
    return VLIndex::remove();
}

VLXmlElement* VLKeyTableIndex::retrieve(const QString& key, const QLocale& locale, QString& path,
                                        int& depth, VLXmlElement*& root)
{
    d->live().settle();
    if (VLIndexHooks::locations(*this).isEmpty())
        return nullptr;
    root = nullptr;
    int file = 0;
    std::unique_ptr<VLXmlElement> tree = d->lookUp(key, locale, file);
    VLXmlElement* element = nullptr;
    if (tree) {
        element = qobject_cast<VLXmlElement*>(tree->children().constFirst());
        d->addKeyData(key, element);
        d->noteGiven(file, key);
        const IndexedLocation location = d->locationOf(file);
        element->setAttribute(ContentNames::locationAttribute(), location.location);
        element->setAttribute(ContentNames::packageNameAttribute(),
                              packageNameForLocation(location.location));
        depth = location.depth;
        path = QFileInfo(location.location).dir().absolutePath();
        root = tree.release();
    }
    d->tell();
    return element;
}

bool VLKeyTableIndex::store(VLXmlElement* element, const QLocale& locale, const QString& location,
                            int depth)
{
    const qsizetype count = VLIndexHooks::locations(*this).size();
    VLIndex::store(element, locale, location, depth);
    d->recordNew(count, false, d->knownFile(location));
    d->live().noteHosted(location);
    return true;
}

QList<QString> VLKeyTableIndex::keys()
{
    d->live().settle();
    QStringList keys = d->keys();
    d->tell();
    return keys;
}

QList<VLSearchHit> VLKeyTableIndex::search(const QString& words, const QLocale& locale, int limit)
{
    d->live().settle();
    QList<VLSearchHit> hits = d->words().search(words, locale, limit);
    d->tell();
    return hits;
}

bool VLKeyTableIndex::isSearchBuilt() const
{
    return d->isSearchBuilt();
}

bool VLKeyTableIndex::waitUntilSearchBuilt(int ms)
{
    return d->words().waitUntilBuilt(deadlineIn(ms));
}

void VLKeyTableIndex::indexControlFile(const QString& file, const QString& root)
{
    if (!file.startsWith(root))
        return;
    const qsizetype count = VLIndexHooks::locations(*this).size();
    const bool isBelow = d->isGuarded() || VLKeyTableIndexPrivate::leadsUpTo(file, root);
    const VLKeyTableFile* known = isBelow ? d->knownFile(file) : nullptr;
    if (known && known->isIndexed) {
        VLIndexHooks::indexKnownFile(*this, file, root);
        d->recordNew(count, true, known);
        d->live().noteHosted(file);
        return;
    }
    // Where content is guarded, the base class does not fall for them.
    if (!d->isGuarded()) {
        const QFileInfo info(file);
        if (!info.exists())
            return;
        QString reason;
        if (!info.isFile())
            reason = u"not a regular file"_s;
        else if (!isBelow)
            reason = u"not below the package %1"_s.arg(root);
        if (!reason.isNull()) {
            d->noteProblem(file, {{}, reason}, true);
            d->tell();
            return;
        }
    }
    VLIndex::indexControlFile(file, root);
    d->recordNew(count, true, nullptr);
    d->live().noteHosted(file);
}

} // namespace Vidlets

#include "moc_VLKeyTableIndex.cpp"
