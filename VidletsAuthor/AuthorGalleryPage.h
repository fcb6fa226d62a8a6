// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORGALLERYPAGE_H
#define AUTHORGALLERYPAGE_H

#include "AuthorFinding.h"

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

class QImage;

namespace Vidlets {

/// One picture of a tip, or why there is none.
struct AuthorGalleryPicture
{
    QString locale;
    /// In which look, as people read it: "light", "dark, right to left".
    QString look;
    /// The file, relative to the gallery; null where it failed.
    QString file;
    QSize size;
    /// Of the file's content.
    QString digest;
    QString failure;
    /// Whether there is no tip in this language, which is no failure.
    bool isMissing = false;
    QStringList warnings;
};

/// A clip as a strip.
struct AuthorGalleryClip
{
    QString name;
    /// Null where the clip cannot be opened.
    QString file;
    QSize size;
    QString digest;
    int frames = 0;
    QSize frameSize;
    double frameRate = 0.0;
};

/// What a comparison with an older gallery says of a tip.
enum class AuthorGalleryChange {
    None,
    Changed,
    Added
};

/// A tip in all its languages and looks.
struct AuthorGalleryTip
{
    QString package;
    QString key;
    QString title;
    QList<AuthorGalleryPicture> pictures;
    QList<AuthorGalleryClip> clips;
    QList<AuthorFinding> findings;
    AuthorGalleryChange change = AuthorGalleryChange::None;

    bool isFailed() const;
};

/// A package, with what is wrong in it outside of its tips.
struct AuthorGalleryPackage
{
    QString name;
    QList<AuthorFinding> findings;
};

/// A gallery.
struct AuthorGalleryData
{
    QList<AuthorGalleryPackage> packages;
    /// By package, then by key.
    QList<AuthorGalleryTip> tips;
    /// The languages that were asked for; empty for all that the packages have.
    QStringList locales;
    /// The looks in which tips are drawn.
    QStringList looks;
    /// The names of tips that an older gallery had.
    QStringList gone;
};

/// The files of a gallery beside its pictures. All in them counts from the gallery's directory.
namespace AuthorGalleryPage {

/// The name of the page.
QString fileName();
/// The name of the list that later galleries are compared with.
QString listName();

/// Returns the page.
QByteArray page(const AuthorGalleryData& data);
/// Returns the list of what is in @p data and can be compared.
QByteArray list(const AuthorGalleryData& data);
/// Reads what list() has written: no findings, failures without their reasons. Nothing where it is
/// no such list.
std::optional<AuthorGalleryData> readList(const QByteArray& bytes);

/// Returns what a tip is called where there are tips of several packages.
QString nameOf(const AuthorGalleryTip& tip, bool areSeveral);
/// Returns whether a title, a clip or a picture differs, or is in one gallery alone although the
/// other one would show it too.
bool isDifferent(const AuthorGalleryData& leftGallery, const AuthorGalleryTip& left,
                 const AuthorGalleryData& rightGallery, const AuthorGalleryTip& right);
/// Returns @p name with letters, digits, "." and "-" alone, different for different names.
QString safeName(const QString& name);
/// Returns the file of an image, always the same for the same image.
QByteArray png(const QImage& image);

} // namespace AuthorGalleryPage

} // namespace Vidlets

#endif
