// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorGalleryPage.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr auto kStyle =
    R"(:root { color-scheme: light dark; --line: #8886; --bad: #c22; --new: #284; --mark: #b60; }
body { font: 15px/1.45 system-ui, sans-serif; margin: 0 auto; max-width: 1500px; padding: 0 24px 48px; }
h1 { font-size: 1.6em; margin: 24px 0 4px; } h2 { margin: 40px 0 8px; }
h3 { font-size: 1.05em; margin: 0 0 8px; }
code { font-size: .92em; opacity: .75; margin-left: .6em; }
nav { columns: 14em; font-size: .92em; margin: 16px 0; } nav a { display: block; }
article { border: 1px solid var(--line); border-radius: 8px; margin: 14px 0; padding: 14px 16px; }
article:target { outline: 2px solid var(--mark); }
.failed { border-color: var(--bad); } .changed { border-left: 6px solid var(--mark); }
.new { border-left: 6px solid var(--new); }
.badge { border-radius: 4px; color: #fff; font-size: .8em; margin-left: .6em; padding: 1px 7px; }
.failed .badge.bad { background: var(--bad); } .changed .badge.diff { background: var(--mark); }
.new .badge.diff { background: var(--new); }
.pictures { overflow-x: auto; } table { border-spacing: 0; }
th { font-weight: 600; padding: 0 16px 6px 0; text-align: left; }
td { padding: 0 16px 12px 0; vertical-align: top; } td small { display: block; opacity: .7; }
img { max-width: none; vertical-align: top; } td img { border: 1px solid var(--line); }
pre { color: var(--bad); margin: 0; max-width: 46em; white-space: pre-wrap; }
figure { margin: 4px 0 10px; overflow-x: auto; } figcaption { font-size: .86em; opacity: .75; }
ul { margin: 8px 0 0; padding-left: 1.2em; } li.error { color: var(--bad); }
)";

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

QString hrefOf(const QString& file)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(file, "/"));
}

QString imageOf(const QString& file, const QSize& size, const QString& alt)
{
    return u"<img src=\"%1\" width=\"%2\" height=\"%3\" alt=\"%4\">"_s.arg(
        hrefOf(file), QString::number(size.width()), QString::number(size.height()), escaped(alt));
}

QString anchorOf(const AuthorGalleryTip& tip)
{
    return AuthorGalleryPage::safeName(tip.package) + u'/' + AuthorGalleryPage::safeName(tip.key);
}

QString classOf(const AuthorGalleryTip& tip)
{
    QString result = u"tip"_s;
    if (tip.isFailed())
        result += " failed"_L1;
    if (tip.change == AuthorGalleryChange::Changed)
        result += " changed"_L1;
    else if (tip.change == AuthorGalleryChange::Added)
        result += " new"_L1;
    return result;
}

/// The values of a column or row, each once, in the order in which they come.
QStringList valuesOf(const AuthorGalleryTip& tip, QString AuthorGalleryPicture::*member)
{
    QStringList result;
    for (const AuthorGalleryPicture& picture : tip.pictures) {
        if (!result.contains(picture.*member))
            result.append(picture.*member);
    }
    return result;
}

QString cellOf(const AuthorGalleryTip& tip, const AuthorGalleryPicture& picture, bool showsLook)
{
    QString text = u"<td>"_s;
    if (showsLook)
        text += u"<small>%1</small>"_s.arg(escaped(picture.look));
    if (!picture.file.isNull())
        text += imageOf(picture.file, picture.size, tip.key + u' ' + picture.locale);
    else if (picture.isMissing)
        text += u"<small>no tip</small>"_s;
    else
        text += u"<pre>%1</pre>"_s.arg(escaped(picture.failure));
    for (const QString& warning : picture.warnings)
        text += u"<pre>%1</pre>"_s.arg(escaped(warning));
    return text + u"</td>"_s;
}

QString tableOf(const AuthorGalleryTip& tip)
{
    const QStringList locales = valuesOf(tip, &AuthorGalleryPicture::locale);
    const QStringList looks = valuesOf(tip, &AuthorGalleryPicture::look);
    QString text = u"<div class=\"pictures\"><table>\n<tr>"_s;
    for (const QString& locale : locales)
        text += u"<th>%1</th>"_s.arg(escaped(locale));
    text += u"</tr>\n"_s;
    for (const QString& look : looks) {
        text += u"<tr>"_s;
        for (const QString& locale : locales) {
            const auto found =
                std::find_if(tip.pictures.cbegin(), tip.pictures.cend(),
                             [&locale, &look](const AuthorGalleryPicture& picture) {
                                 return picture.locale == locale && picture.look == look;
                             });
            text += found == tip.pictures.cend() ? u"<td></td>"_s
                                                 : cellOf(tip, *found, looks.size() > 1);
        }
        text += u"</tr>\n"_s;
    }
    return text + u"</table></div>\n"_s;
}

QString clipOf(const AuthorGalleryClip& clip)
{
    if (clip.file.isNull())
        return u"<figure><pre>%1 cannot be opened.</pre></figure>\n"_s.arg(escaped(clip.name));
    const QString caption = u"%1: %2, %3 a second, %4 × %5"_s.arg(
        escaped(clip.name), counted(clip.frames, u"picture"_s),
        QString::number(clip.frameRate, 'g', 4), QString::number(clip.frameSize.width()),
        QString::number(clip.frameSize.height()));
    return u"<figure class=\"strip\">%1<figcaption>%2</figcaption></figure>\n"_s.arg(
        imageOf(clip.file, clip.size, clip.name), caption);
}

QString findingsOf(const QList<AuthorFinding>& findings)
{
    if (findings.isEmpty())
        return QString();
    QString text = u"<ul class=\"findings\">\n"_s;
    for (const AuthorFinding& finding : findings) {
        QString place = finding.file;
        if (finding.position.line > 0)
            place += u":%1:%2"_s.arg(finding.position.line).arg(finding.position.column);
        text += u"<li class=\"%1\">%2: %1: %3 %4 [%5]</li>\n"_s.arg(
            severityName(finding.severity), escaped(place), escaped(finding.message),
            escaped(finding.help), finding.rule);
    }
    return text + u"</ul>\n"_s;
}

QString articleOf(const AuthorGalleryTip& tip)
{
    QString text = u"<article class=\"%1\" id=\"%2\">\n<h3>%3<code>%4</code>"_s.arg(
        classOf(tip), escaped(anchorOf(tip)), escaped(tip.title), escaped(tip.key));
    if (tip.isFailed())
        text += u"<span class=\"badge bad\">failed</span>"_s;
    if (tip.change == AuthorGalleryChange::Changed)
        text += u"<span class=\"badge diff\">changed</span>"_s;
    else if (tip.change == AuthorGalleryChange::Added)
        text += u"<span class=\"badge diff\">new</span>"_s;
    text += u"</h3>\n"_s + tableOf(tip);
    for (const AuthorGalleryClip& clip : tip.clips)
        text += clipOf(clip);
    return text + findingsOf(tip.findings) + u"</article>\n"_s;
}

QString sectionOf(const AuthorGalleryData& data, const AuthorGalleryPackage& package)
{
    QString text = u"<section>\n<h2>%1</h2>\n"_s.arg(escaped(package.name));
    text += findingsOf(package.findings);
    QString links;
    QString articles;
    for (const AuthorGalleryTip& tip : data.tips) {
        if (tip.package != package.name)
            continue;
        links +=
            u"<a class=\"to\" href=\"#%1\">%2</a>\n"_s.arg(hrefOf(anchorOf(tip)), escaped(tip.key));
        articles += articleOf(tip);
    }
    return text + u"<nav>\n"_s + links + u"</nav>\n"_s + articles + u"</section>\n"_s;
}

QString summaryOf(const AuthorGalleryData& data)
{
    const auto count = [&data](auto matches) {
        return QString::number(std::count_if(data.tips.cbegin(), data.tips.cend(), matches));
    };
    const QString failed = count([](const AuthorGalleryTip& tip) { return tip.isFailed(); });
    const QString changed = count(
        [](const AuthorGalleryTip& tip) { return tip.change == AuthorGalleryChange::Changed; });
    const QString added =
        count([](const AuthorGalleryTip& tip) { return tip.change == AuthorGalleryChange::Added; });
    return u"<p>%1, %2 failed, %3 changed, %4 new, %5 gone</p>\n"_s.arg(
        counted(data.tips.size(), u"tip"_s), failed, changed, added,
        QString::number(data.gone.size()));
}

QJsonObject objectOf(const AuthorGalleryTip& tip)
{
    QJsonArray pictures;
    for (const AuthorGalleryPicture& picture : tip.pictures) {
        pictures.append(QJsonObject{{u"locale"_s, picture.locale},
                                    {u"look"_s, picture.look},
                                    {u"file"_s, picture.file},
                                    {u"digest"_s, picture.digest}});
    }
    QJsonArray clips;
    for (const AuthorGalleryClip& clip : tip.clips) {
        clips.append(QJsonObject{
            {u"name"_s, clip.name}, {u"file"_s, clip.file}, {u"digest"_s, clip.digest}});
    }
    return {{u"package"_s, tip.package},
            {u"key"_s, tip.key},
            {u"title"_s, tip.title},
            {u"pictures"_s, pictures},
            {u"clips"_s, clips}};
}

AuthorGalleryTip tipOf(const QJsonObject& object)
{
    AuthorGalleryTip tip;
    tip.package = object.value("package"_L1).toString();
    tip.key = object.value("key"_L1).toString();
    tip.title = object.value("title"_L1).toString();
    const QJsonArray pictures = object.value("pictures"_L1).toArray();
    for (const auto& value : pictures) {
        AuthorGalleryPicture picture;
        picture.locale = value["locale"_L1].toString();
        picture.look = value["look"_L1].toString();
        picture.file = value["file"_L1].toString();
        picture.digest = value["digest"_L1].toString();
        tip.pictures.append(picture);
    }
    const QJsonArray clips = object.value("clips"_L1).toArray();
    for (const auto& value : clips) {
        AuthorGalleryClip clip;
        clip.name = value["name"_L1].toString();
        clip.file = value["file"_L1].toString();
        clip.digest = value["digest"_L1].toString();
        tip.clips.append(clip);
    }
    return tip;
}

QStringList stringsOf(const QJsonValue& list)
{
    QStringList result;
    const QJsonArray values = list.toArray();
    for (const auto& value : values)
        result.append(value.toString());
    return result;
}

/// Whether @p picture is not as in @p tip, which is one of @p gallery.
bool isOther(const AuthorGalleryPicture& picture, const AuthorGalleryTip& tip,
             const AuthorGalleryData& gallery)
{
    const auto same = std::find_if(
        tip.pictures.cbegin(), tip.pictures.cend(), [&picture](const AuthorGalleryPicture& other) {
            return other.locale == picture.locale && other.look == picture.look;
        });
    if (same != tip.pictures.cend())
        return same->digest != picture.digest;
    // What was not asked for is not gone, and where there is no picture nothing is.
    return !picture.digest.isEmpty() && gallery.looks.contains(picture.look)
        && (gallery.locales.isEmpty() || gallery.locales.contains(picture.locale));
}

} // namespace

bool AuthorGalleryTip::isFailed() const
{
    return std::any_of(pictures.cbegin(), pictures.cend(), [](const AuthorGalleryPicture& picture) {
        return picture.file.isEmpty() && !picture.isMissing;
    });
}

QString AuthorGalleryPage::fileName()
{
    return u"index.html"_s;
}

QString AuthorGalleryPage::listName()
{
    return u"gallery.json"_s;
}

QByteArray AuthorGalleryPage::page(const AuthorGalleryData& data)
{
    QString text =
        u"<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width\">\n<title>Tips</title>\n<style>\n"_s;
    text += QLatin1StringView(kStyle);
    text += u"</style>\n</head>\n<body>\n<h1>Tips</h1>\n"_s + summaryOf(data);
    for (const AuthorGalleryPackage& package : data.packages)
        text += sectionOf(data, package);
    if (!data.gone.isEmpty()) {
        text += u"<section class=\"gone\">\n<h2>Gone</h2>\n<ul>\n"_s;
        for (const QString& name : data.gone)
            text += u"<li>%1</li>\n"_s.arg(escaped(name));
        text += u"</ul>\n</section>\n"_s;
    }
    return (text + u"</body>\n</html>\n"_s).toUtf8();
}

QByteArray AuthorGalleryPage::list(const AuthorGalleryData& data)
{
    QJsonArray tips;
    for (const AuthorGalleryTip& tip : data.tips)
        tips.append(objectOf(tip));
    const QJsonObject gallery{{u"vidletsGallery"_s, 1},
                              {u"locales"_s, QJsonArray::fromStringList(data.locales)},
                              {u"looks"_s, QJsonArray::fromStringList(data.looks)},
                              {u"tips"_s, tips}};
    return QJsonDocument(gallery).toJson();
}

std::optional<AuthorGalleryData> AuthorGalleryPage::readList(const QByteArray& bytes)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (object.value("vidletsGallery"_L1).toInt() != 1)
        return std::nullopt;
    AuthorGalleryData data;
    const QJsonArray tips = object.value("tips"_L1).toArray();
    for (const auto& value : tips)
        data.tips.append(tipOf(value.toObject()));
    data.locales = stringsOf(object.value("locales"_L1));
    data.looks = stringsOf(object.value("looks"_L1));
    return data;
}

QString AuthorGalleryPage::nameOf(const AuthorGalleryTip& tip, bool areSeveral)
{
    return areSeveral ? tip.package + u'/' + tip.key : tip.key;
}

bool AuthorGalleryPage::isDifferent(const AuthorGalleryData& leftGallery,
                                    const AuthorGalleryTip& left,
                                    const AuthorGalleryData& rightGallery,
                                    const AuthorGalleryTip& right)
{
    if (left.title != right.title || left.clips.size() != right.clips.size())
        return true;
    for (qsizetype i = 0; i < left.clips.size(); ++i) {
        if (left.clips.at(i).name != right.clips.at(i).name
            || left.clips.at(i).digest != right.clips.at(i).digest)
            return true;
    }
    const auto isOtherThan = [](const AuthorGalleryTip& tip, const AuthorGalleryData& gallery) {
        return [&tip, &gallery](const AuthorGalleryPicture& picture) {
            return isOther(picture, tip, gallery);
        };
    };
    return std::any_of(left.pictures.cbegin(), left.pictures.cend(),
                       isOtherThan(right, rightGallery))
        || std::any_of(right.pictures.cbegin(), right.pictures.cend(),
                       isOtherThan(left, leftGallery));
}

QString AuthorGalleryPage::safeName(const QString& name)
{
    constexpr qsizetype kMaxLength = 120;
    constexpr qsizetype kHashLength = 16;
    QString result;
    const QByteArray bytes = name.toUtf8();
    for (const char byte : bytes) {
        const bool isPlain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z')
            || (byte >= '0' && byte <= '9') || byte == '-' || (byte == '.' && !result.isEmpty());
        if (isPlain)
            result += QLatin1Char(byte);
        else
            result += u"_%1"_s.arg(static_cast<uchar>(byte), 2, 16, QLatin1Char('0'));
    }
    if (result.size() <= kMaxLength)
        return result.isEmpty() ? u"_"_s : result;
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    return result.left(kMaxLength) + u"__"_s + QString::fromLatin1(hash.left(kHashLength));
}

QByteArray AuthorGalleryPage::png(const QImage& image)
{
    // Without what the picture may know of its origin.
    QImage plain = image;
    plain.setDotsPerMeterX(0);
    plain.setDotsPerMeterY(0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    plain.save(&buffer, "PNG");
    return bytes;
}

} // namespace Vidlets
