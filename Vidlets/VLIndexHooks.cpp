// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLIndexHooks.h"

#include "VLContentGuard.h"
#include "VLTipFilter.h"
#include "VLXmlElement.h"
#include "VLXmlParser.h"

#include <QXmlStreamReader>

namespace Vidlets {

namespace {

VLFileStamp fileStamp(const VLContentGuard::Stamp& stamp)
{
    return {stamp.size, stamp.modifiedNs, stamp.changedNs};
}

} // namespace

std::atomic<int> VLIndexHooks::settledAfterMs = 3000;

const QList<IndexedLocation>& VLIndexHooks::locations(const VLIndex& index)
{
    return index.locations();
}

bool VLIndexHooks::open(QFile& file, VLFileStamp& stamp, QString& reason)
{
    VLContentGuard::Stamp found;
    const bool isOpen = VLContentGuard::open(file, found, reason);
    stamp = fileStamp(found);
    return isOpen;
}

VLFileStamp VLIndexHooks::stampAt(const QString& path)
{
    return fileStamp(VLContentGuard::stampAt(path));
}

std::unique_ptr<VLXmlElement> VLIndexHooks::parse(QIODevice& device, const QString& key,
                                                  XmlReport& report)
{
    VLXmlParser parser(TipFilter::matchKeyElement, const_cast<QString*>(&key));
    QXmlStreamReader reader(&device);
    return std::unique_ptr<VLXmlElement>(parser.parseSurviving(reader, report));
}

void VLIndexHooks::explain(const QByteArray& document, XmlReport& report)
{
    VLContentGuard::explain(document, report);
}

void VLIndexHooks::warn(VLIndex& index, const QString& path, XmlPosition position,
                        const QString& reason)
{
    if (position.line > 0)
        index.guard().warn(path, position, reason);
    else
        index.guard().warn(path, reason);
}

} // namespace Vidlets
