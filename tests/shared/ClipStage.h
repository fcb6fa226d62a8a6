// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CLIPSTAGE_H
#define CLIPSTAGE_H

#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QByteArray>
#include <QMap>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <memory>

/**
 * A package with clips, and a view for the items that play them.
 *
 * The package is filled first. What is on the screen comes after that, and is either a view of the
 * stage's own or that of a popup.
 */
class ClipStage
{
public:
    explicit ClipStage(const QString& package = QStringLiteral("tips.vidlets"),
                       const QMap<int, QVariant>& settings = {});
    /// Items that a test has made are gone by then, as an item needs its view.
    ~ClipStage();

    /// Writes a control file with one tip for @p key.
    void addTip(const QString& key);
    /// Writes @p content to @p name in the package's resources.
    void addClip(const QString& name, const QByteArray& content);
    /// Writes @p content to @p name in the package. Returns the file's path.
    QString write(const QString& name, const QByteArray& content);
    /// The path of @p name in the package's resources.
    QString resource(const QString& name) const;

    /// Makes a view of its own, hidden and without a scene, on content of the package.
    void openView();
    /// Shows the popup for @p key. Returns whether there is a tip for it.
    bool showPopup(const QString& key, const QPoint& position, QObject* reference);
    /// The view that was opened or else that of the last popup; null where there is neither.
    Vidlets::VLView* view() const;

    static Vidlets::VLVideoController* controllerOf(const Vidlets::VLVideoComponent* item);
    static Vidlets::VLVideoSourceFFMPEG* sourceOf(const Vidlets::VLVideoComponent* item);

private:
    Q_DISABLE_COPY_MOVE(ClipStage)

    void openManager();

    const QString m_package;
    PackageBuilder m_packages;
    VLContext m_context{nullptr};
    RecordingInterface m_host{m_context};
    Vidlets::VLIndex m_index{&m_context, {}};
    std::unique_ptr<Vidlets::VLManager> m_manager;
    std::unique_ptr<Vidlets::VLView> m_view;
    QPointer<Vidlets::VLWidget> m_popup;
    /// Above the content of the last tip.
    QPointer<QObject> m_root;
};

#endif
