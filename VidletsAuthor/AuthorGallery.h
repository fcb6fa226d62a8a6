// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORGALLERY_H
#define AUTHORGALLERY_H

#include "AuthorFinding.h"
#include "AuthorGalleryPage.h"
#include "AuthorLook.h"
#include "AuthorTipList.h"

#include <QFile>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace Vidlets {

class AuthorTipPainter;

/// What a gallery is to show, and where it goes.
struct AuthorGalleryOptions
{
    /// A package or a data path.
    QString path;
    /// The directory of the gallery.
    QString directory;
    /// Empty for all that the packages have.
    QStringList locales;
    /// Empty for 1.
    QList<double> scales;
    /// Whether each tip is drawn in dark colours too.
    bool isDark = false;
    /// Whether each tip of a language that is written to the right is drawn mirrored too.
    bool isRightToLeft = false;
    /// The directory of a gallery to compare with; empty for none.
    QString oldDirectory;
};

/// How a gallery came out.
struct AuthorGalleryResult
{
    int tips = 0;
    /// Those of which a picture is missing.
    int failed = 0;
    /// Whether check finds an error or a warning.
    bool hasFaults = false;
    /// The keys, sorted, each with the name of its package before it where there are several.
    QStringList changed;
    QStringList added;
    QStringList gone;
};

/**
 * Draws all tips of packages into pictures and a page that shows them.
 *
 * Runs once, on the user-interface thread of an application as AuthorTipPainter wants it. What a
 * gallery was before in the directory is replaced, also one that was not finished; nothing else
 * there is touched.
 */
class AuthorGallery
{
public:
    explicit AuthorGallery(AuthorGalleryOptions options);

    /// Returns whether there is something to draw and a place for it; if not, the @p reason as a
    /// sentence.
    bool prepare(QString& reason);
    /// Draws, after prepare(). False, with a @p reason, where the files cannot be written.
    bool run(AuthorGalleryResult& result, QString& reason);

private:
    void collectPrefixes();
    void makeTips();
    void addFindings();
    QList<AuthorLook> looks() const;
    bool drawAll(const AuthorLook& look);
    bool drawTip(AuthorTipPainter& painter, const AuthorLook& look, qsizetype package,
                 qsizetype tip, AuthorGalleryTip& entry);
    bool addClip(const QString& path, AuthorGalleryTip& entry);
    bool beginNotes();
    bool save(const QString& name, const QByteArray& bytes);
    bool areSeveral() const;
    void compare(AuthorGalleryResult& result);
    void removeOld() const;
    QString relative(const QString& text) const;

    AuthorGalleryOptions m_options;
    AuthorTipList m_list;
    AuthorGalleryData m_data;
    /// The pictures that the directory held before, also of a gallery that was not finished.
    QStringList m_before;
    AuthorGalleryData m_old;
    /// By their paths.
    QHash<QString, AuthorGalleryClip> m_clips;
    QSet<QString> m_written;
    /// Names each picture before it is written, as long as the gallery is not finished.
    QFile m_notes;
    /// The beginnings of paths that are left out of texts.
    QStringList m_prefixes;
    bool m_hasFaults = false;
};

} // namespace Vidlets

#endif
