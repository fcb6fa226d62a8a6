// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipText.h"

#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLXmlElement.h>

#include <QObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// What @p text says without its markup. Nothing of it is loaded or looked up, other than where a
/// document is made of it.
QString withoutMarkup(const QString& text)
{
    static const QRegularExpression tag(u"</?[a-zA-Z][^<>]*>"_s);
    static const QRegularExpression lineBreak(u"</?(br|p|div|li|tr|h[1-6])\\b[^<>]*>"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    if (!text.contains(u'<') && !text.contains(u'&'))
        return text;
    QString result = text;
    result.replace(lineBreak, u" "_s);
    result.remove(tag);
    result.replace("&nbsp;"_L1, " "_L1);
    result.replace("&lt;"_L1, "<"_L1);
    result.replace("&gt;"_L1, ">"_L1);
    result.replace("&quot;"_L1, R"(")"_L1);
    return result.replace("&amp;"_L1, "&"_L1);
}

QString asShown(const QString& source, VLManager* manager)
{
    return withoutMarkup(manager ? manager->interpolate(source) : source).simplified();
}

} // namespace

QString TipText::summaryAttribute()
{
    return u"summary"_s;
}

QString TipText::asSentences(const QStringList& parts)
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

QString TipText::plain(const QString& source)
{
    return asShown(source, nullptr);
}

QString TipText::title(const VLXmlElement& tip, VLManager* manager)
{
    return asShown(tip.attribute(ContentNames::titleAttribute()), manager);
}

QString TipText::text(const VLXmlElement& tip, VLManager* manager)
{
    QStringList parts{asShown(tip.attribute(summaryAttribute()), manager),
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
