// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "RandomPackages.h"

#include <QStringEncoder>

using namespace Qt::StringLiterals;

namespace {

constexpr int kMaxDepth = 4;
// More than an XML reader takes at once.
constexpr int kManyLetters = 9000;

} // namespace

RandomPackages::RandomPackages(quint32 seed)
    : m_engine(seed)
{
}

QStringList RandomPackages::keys()
{
    return {QString(), u"a"_s, u"b"_s,      u"c"_s,   u"A"_s,
            u"a b"_s,  u"<"_s, u"\u00e4"_s, u"ent"_s, u"unused"_s};
}

QStringList RandomPackages::locales()
{
    return {QString(), u"C"_s, u"de"_s, u"de_DE"_s, u"de_AT"_s, u"en_US"_s, u"nonsense"_s};
}

int RandomPackages::number(int end)
{
    return int(m_engine() % unsigned(end));
}

bool RandomPackages::chance(int perCent)
{
    return number(100) < perCent;
}

QString RandomPackages::pick(const QStringList& choices)
{
    return choices.at(number(int(choices.size())));
}

QByteArray RandomPackages::controlFile()
{
    // The first ones are written as they are named, the others hold letters of their own.
    const QStringList names{QString(),   QString(),       QString(),         u"UTF-8"_s,
                            u"utf-16"_s, u"ISO-8859-1"_s, u"windows-1252"_s, u"GB18030"_s};
    m_encodingName = pick(names);
    m_hasEntities = false;
    const QString start = prolog();
    QString children;
    const int count = number(9);
    for (int i = 0; i < count; ++i)
        children += filling() + child(0);
    children += filling();
    QString document = start + root(children);
    if (chance(20))
        document += pick({u"\n"_s, u"<!-- <vidlets> -->"_s, u"<?end ?>\n"_s});
    if (chance(15))
        document.replace(u'\n', u"\r\n"_s);
    const QByteArray bytes = encoded(document);
    return chance(20) ? broken(bytes) : bytes;
}

QByteArray RandomPackages::keyDataFile()
{
    m_encodingName.clear();
    m_hasEntities = false;
    QString records;
    const int count = number(6);
    for (int i = 0; i < count; ++i) {
        const QString tag = chance(85) ? u"key"_s : pick({u"other"_s, u"vidletkeys"_s});
        records += u"<%1 name='%2' title='%3'%4>%5</%1>\n"_s.arg(
            tag, pick(keys()).toHtmlEscaped(), QString::number(number(9)),
            chance(30) ? attributes().remove(u" key="_s) : QString(),
            chance(20) ? u"<key name='a' in='1'/>"_s : QString());
    }
    const QString tag = chance(90) ? u"vidletkeys"_s : pick({u"key name='a'"_s, u"other"_s});
    const QString document = u"<%1>%2</%3>"_s.arg(tag, records, tag.section(u' ', 0, 0));
    const QByteArray bytes = document.toUtf8();
    return chance(25) ? broken(bytes) : bytes;
}

QByteArray RandomPackages::broken(QByteArray content)
{
    if (content.isEmpty())
        return content;
    const int place = number(int(content.size()));
    const QByteArray wrong = QByteArray("<>&\"'/]-?\0\xff\x80 v", 14);
    switch (number(5)) {
    case 0:
        return content.left(place);
    case 1:
        content[place] = wrong.at(number(int(wrong.size())));
        return content;
    case 2:
        return content.insert(place, wrong.at(number(int(wrong.size()))));
    case 3:
        return content.remove(place, 1 + number(20));
    default:
        return content + "<x/>";
    }
}

QString RandomPackages::prolog()
{
    QString text;
    if (!m_encodingName.isEmpty())
        text += u"<?xml version='1.0' encoding='%1'?>\n"_s.arg(m_encodingName);
    else if (chance(30))
        text += u"<?xml version='1.0' standalone='%1'?>\n"_s.arg(pick({u"yes"_s, u"no"_s}));
    if (chance(20))
        text += pick({u"<!-- plain -->\n"_s, u"<!-- <vidlets > 'x -->"_s, u"<?p <a> ?>\n"_s});
    if (chance(25))
        text += documentType();
    if (chance(10))
        text += u"<!-- %1 -->\n"_s.arg(QString(number(kManyLetters), u'p'));
    return text;
}

QString RandomPackages::documentType()
{
    m_hasEntities = true;
    QString subset = u"<!ENTITY e 'ent'>\n<!ENTITY f '&e;]>'>"_s;
    subset += chance(30) ? u"<!ENTITY m '<b>in &e;</b>'>"_s : u"<!ENTITY m \"it's\">"_s;
    subset += chance(30) ? u"<!ENTITY t '&#60;vidlet key=\"ent\">t&#60;/vidlet>'>"_s
                         : u"<!ENTITY t 'tip'>"_s;
    if (chance(30))
        subset += u"<!ATTLIST vidlet key CDATA 'c' added CDATA '&e;>'>"_s;
    if (chance(20))
        subset += u"<!ATTLIST vidlets locale CDATA 'de'>"_s;
    if (chance(30))
        subset += u"<!-- ]> <vidlets> ' --><?p ]> \" ?>"_s;
    return u"<!DOCTYPE vidlets %1[%2]>\n"_s.arg(chance(20) ? u"SYSTEM 'x.dtd' "_s : QString(),
                                                subset);
}

QString RandomPackages::root(const QString& children)
{
    QString tag = u"vidlets"_s;
    if (chance(8))
        tag = pick({u"vidlet"_s, u"other"_s, u"x:vidlets"_s});
    QString start = tag;
    if (chance(60))
        start += u" locale='%1'"_s.arg(pick(locales()));
    if (chance(20) || tag.contains(u':'))
        start += u" xmlns:x='urn:x'"_s;
    if (chance(10))
        start += u" xmlns='urn:d'"_s;
    if (chance(15))
        start += u" search='P1, P2;Q'"_s;
    if (tag == "vidlet"_L1)
        start += u" key='a'"_s;
    else if (chance(20))
        start += attributes();
    return u"<%1>%2</%3>"_s.arg(start, children, tag);
}

QString RandomPackages::child(int depth)
{
    if (chance(82))
        return tip(depth);
    switch (number(5)) {
    case 0:
        return u"<vidlets%1>%2</vidlets>"_s.arg(attributes(), content(depth + 1) + tip(depth + 1));
    case 1:
        return u"<other%1>%2</other>"_s.arg(attributes(), tip(depth + 1));
    case 2:
        return u"<y:vidlet xmlns:y='urn:y' key='a' y:key='b'/>"_s;
    case 3:
        return m_hasEntities ? u"&t;"_s : u"&amp;"_s;
    default:
        return u"<VIDLET key='a'/>"_s;
    }
}

QString RandomPackages::tip(int depth)
{
    const QString inside = content(depth + 1);
    const QString start = u"vidlet"_s + attributes();
    if (inside.isEmpty() && chance(50))
        return u"<%1/>"_s.arg(start);
    return u"<%1>%2</vidlet%3>"_s.arg(start, inside, chance(10) ? u"\n"_s : QString());
}

QString RandomPackages::attributes()
{
    QString text;
    if (chance(90)) {
        const QString key = m_hasEntities && chance(10) ? u"&e;"_s : pick(keys()).toHtmlEscaped();
        text += (chance(20) ? u"\n "_s : u" "_s) + u"key='%1'"_s.arg(key);
    }
    if (chance(20))
        text += u" a=\"/>'&lt;vidlet>\""_s;
    if (chance(15))
        text += u" VLLocation='x' VLPackagName='y'"_s;
    if (chance(15))
        text += u" title = '\u00fc&#x20;\n z'"_s;
    return text;
}

QString RandomPackages::content(int depth)
{
    QString text;
    const int count = number(4);
    for (int i = 0; i < count; ++i) {
        text += filling();
        if (depth < kMaxDepth && chance(40))
            text += chance(20) ? tip(depth + 1)
                               : u"<b c='%1'>%2</b>"_s.arg(number(9)).arg(content(depth + 1));
    }
    if (chance(2))
        text += QString(u"<d>"_s).repeated(300) + QString(u"</d>"_s).repeated(300);
    return text;
}

QString RandomPackages::text()
{
    // What each of the encodings has.
    QString text = pick({u"text"_s, u" \u00e4\u00f6 "_s, u"\n  "_s, u"x > y"_s, u"&lt;vidlet&gt;"_s,
                         u"&#228;"_s, u"]]"_s});
    if (m_encodingName.isEmpty() || m_encodingName.startsWith("utf"_L1, Qt::CaseInsensitive))
        text += pick({QString(), u"\u20ac"_s, u"\U0001F600"_s, u"\u3c3c\u3e3e"_s});
    if (m_hasEntities && chance(40))
        text += pick({u"&e;"_s, u"&f;"_s, u"&m;"_s});
    return text;
}

QString RandomPackages::filling()
{
    switch (number(10)) {
    case 0:
        return u"<!-- <vidlet key='a'> ' -->"_s;
    case 1:
        return u"<![CDATA[<vidlet key='b'/> ]] & ]]>"_s;
    case 2:
        return u"<?p <vidlet> ' ?>"_s;
    case 3:
    case 4:
        return text();
    case 5:
        return chance(10) ? QString(number(kManyLetters), u'.') : text();
    case 6:
        return u"\n"_s;
    default:
        return QString();
    }
}

QByteArray RandomPackages::encoded(const QString& document)
{
    using Flag = QStringConverter::Flag;
    if (m_encodingName == "utf-16"_L1) {
        const bool isLittle = chance(50);
        QStringEncoder encoder(isLittle ? QStringConverter::Utf16LE : QStringConverter::Utf16BE,
                               chance(70) ? Flag::WriteBom : Flag::Default);
        return encoder(document);
    }
    if (m_encodingName.isEmpty() || m_encodingName == "UTF-8"_L1) {
        QStringEncoder encoder(QStringConverter::Utf8, chance(20) ? Flag::WriteBom : Flag::Default);
        return encoder(document);
    }
    if (m_encodingName != "GB18030"_L1)
        return document.toLatin1();
    QStringEncoder encoder("GB18030");
    // Qt may have been built without it: then it is just a broken file.
    return encoder.isValid() ? QByteArray(encoder(document)) : document.toLatin1();
}
