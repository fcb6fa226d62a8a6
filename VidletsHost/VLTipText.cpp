// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipText.h"

#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLXmlElement.h>

#include <QObject>
#include <QStringList>
#include <QTextDocumentFragment>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString asShown(const QString& source, VLManager* manager)
{
    // What looks like markup is searched for in the first line alone.
    QString text = (manager ? manager->interpolate(source) : source).simplified();
    if (Qt::mightBeRichText(text)) {
        text = QTextDocumentFragment::fromHtml(text).toPlainText();
        // What stands for a picture says nothing.
        text.remove(QChar::ObjectReplacementCharacter);
    }
    return text.simplified();
}

/// A screen reader runs sentences without a full stop together.
QString asSentences(const QStringList& parts)
{
    QString result;
    for (const QString& part : parts) {
        if (part.isEmpty())
            continue;
        if (!result.isEmpty())
            result += result.back().isLetterOrNumber() ? ". "_L1 : " "_L1;
        result += part;
    }
    return result;
}

} // namespace

QString TipText::title(const VLXmlElement& tip, VLManager* manager)
{
    return asShown(tip.attribute(ContentNames::titleAttribute()), manager);
}

QString TipText::text(const VLXmlElement& tip, VLManager* manager)
{
    QStringList parts{asShown(tip.attribute(u"summary"_s), manager),
                      asShown(tip.content(), manager)};
    const QList<QObject*> descendants = tip.childElementList(QString());
    for (const QObject* descendant : descendants) {
        if (const auto* element = qobject_cast<const VLXmlElement*>(descendant))
            parts += asShown(element->content(), manager);
    }
    return asSentences(parts);
}

QString TipText::spoken(const VLXmlElement& tip, VLManager* manager)
{
    return asSentences({title(tip, manager),
                        asShown(tip.attribute(ContentNames::shortcutAttribute()), manager),
                        text(tip, manager)});
}

} // namespace Vidlets
