// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// A control file into the rows of the table, and each tip out of its bytes alone.
//
// The input is the file. What is read out of a tip's bytes has to be what a pass over the whole
// file gives, and a row has to lie within the file.

#include "FuzzSupport.h"
#include <Vidlets/VLXmlElement.h>

#include <VidletsHost/VLKeyTableRange.h>
#include <VidletsHost/VLKeyTableReader.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

QString textOf(const KeyTableRange::Result& result)
{
    if (result.outcome != KeyTableRange::Outcome::Found)
        return u"none"_s;
    auto* tip = qobject_cast<VLXmlElement*>(result.root->children().constFirst());
    return tip->toXml() + u" in "_s + result.root->getTagName()
        + result.root->attributeNames().join(u' ');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    const QString path = directory.write(u"a.xml"_s, inputBytes(data, size));
    const VLKeyTableFile file = VLKeyTableReader(path, VLKeyTableReader::Keys::List).read();
    const KeyTableRange::Source source{path, file.stamp, file.unit, file.headLength, file.rootTag};
    for (const VLKeyTableRow& row : file.rows) {
        if (row.start < 0 || row.length < 0 || row.start + row.length > qint64(size))
            qFatal("The row is not within the file");
        if (row.kind != VLKeyTableRowKind::Tip || row.length == 0)
            continue;
        const KeyTableRange::Result part = KeyTableRange::read(source, row, row.key);
        if (part.outcome == KeyTableRange::Outcome::Changed)
            qFatal("The file has not changed");
        if (part.outcome == KeyTableRange::Outcome::Found
            && textOf(part) != textOf(KeyTableRange::readWhole(source, row.key)))
            qFatal("The tip is another one");
    }
    return 0;
}
