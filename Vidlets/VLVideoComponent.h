// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOCOMPONENT_H
#define VLVIDEOCOMPONENT_H

#include "VLVideoFrame.h"
#include <Vidlets/VidletsExport.h>

#include <QPointer>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace Vidlets {

class VLManager;
class VLVideoController;
class VLVideoSource;
class VLView;
struct VLClipSafeguards;

/**
 * The QML item that shows a clip of the package.
 *
 * It owns a source and a controller, with a thread each from its construction to its destruction,
 * finds the clip through the view that it lies in, and forwards everything else to the controller.
 * The picture is painted at the item's top left corner, and the item's own size plays no part. It
 * is scaled by ckScale where that turns one pixel into another number: at 2 or more, or below 1.
 *
 * A clip that is still playing when its decoding ends is paused by the controller, and again at its
 * last frame; it is the scene that asks it to go on. A name that leads to no file, and a file that
 * cannot be opened, are not told to QML.
 *
 * Everything runs on the user-interface thread, but for the painting, which is the scene graph's.
 */
class VIDLETS_EXPORT VLVideoComponent : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT

    /// The name of the clip within the package's resource directory. Dropped while the item is in
    /// no view, so a scene sets it once the item has a window; the empty name pauses and rewinds
    /// even then. The signal is never sent.
    Q_PROPERTY(QString source READ source WRITE setSource NOTIFY sourceChanged)
    /// Whether the clip plays; the item's own states of QML are not reached through it.
    Q_PROPERTY(VideoState state READ state WRITE setState NOTIFY stateChanged)
    /// The index of the frame to be shown next.
    Q_PROPERTY(qlonglong position READ position WRITE setPosition NOTIFY positionChanged)
    /// The position divided by the number of frames.
    Q_PROPERTY(double progress READ progress WRITE setProgress NOTIFY progressChanged)
    /// Kept for the scene to read; has no part in finding the clip.
    Q_PROPERTY(QString searchPath READ searchPath WRITE setSearchPath NOTIFY searchPathChanged)
    /// While true, the end of decoding does not pause. The signal is never sent.
    Q_PROPERTY(bool scrubbing READ isScrubbing WRITE setScrubbing NOTIFY scrubbingChanged)
    /// Height of the clip, in its own pixels; 150 before the first.
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY contentHeightChanged)
    /// Width of the clip, in its own pixels; 200 before the first.
    Q_PROPERTY(double contentWidth READ contentWidth NOTIFY contentWidthChanged)
    /// How much of the clip is loaded: 1.0, or not a number while there are no frames.
    Q_PROPERTY(double loadProgress READ loadProgress NOTIFY loadProgressChanged)

public:
    /// The values of the property state.
    enum VideoState {
        resetState = 0, ///< Asks for a pause, unless scrubbing, and a fresh frame; never read back.
        pausedState = 1, ///< The position stands.
        playingState = 2 ///< The position walks.
    };
    Q_ENUM(VideoState)

    /// Makes an item with no clip and starts its two threads. @p parent may be null.
    explicit VLVideoComponent(QQuickPaintedItem* parent = nullptr);

    /// Stops the controller, then the source. Each may take as long as its thread needs to end.
    ~VLVideoComponent() override;

    /// Returns the property source.
    QString source() const;
    /// Sets the property source and loads the clip if the name leads to a file.
    void setSource(const QString& name);
    /// Returns the property state.
    VideoState state() const;
    /// Asks the controller for @p state.
    void setState(VideoState state);
    /// Returns the property position.
    qlonglong position() const;
    /// Moves to the frame @p position, or to the last one.
    void setPosition(qlonglong position);
    /// Returns the property progress.
    double progress() const;
    /// Moves to @p progress, from 0.0 to 1.0.
    void setProgress(double progress);
    /// Returns the property searchPath.
    QString searchPath() const;
    /// Sets the property; the signal is sent also when it stays the same.
    void setSearchPath(const QString& path);
    /// Returns the property scrubbing.
    bool isScrubbing() const;
    /// Sets the property scrubbing.
    void setScrubbing(bool scrubbing);
    /// Returns the property contentHeight.
    double contentHeight() const;
    /// Returns the property contentWidth.
    double contentWidth() const;
    /// Returns the property loadProgress.
    double loadProgress() const;

    /// Draws the frame, scaled by the view's factor.
    void paint(QPainter* painter) override;

Q_SIGNALS:
    // Two have the name of one of QQuickItem, and stay the item's own.
    // clazy:excludeall=overloaded-signal,overridden-signal

    /// Never sent.
    void sourceChanged();
    /// The state was set.
    void stateChanged();
    /// The position has moved.
    void positionChanged();
    /// The position has moved.
    void progressChanged();
    /// A frame of another height is shown.
    void heightChanged();
    /// The search path was set.
    void searchPathChanged();
    /// Never sent.
    void scrubbingChanged();
    /// A new clip was opened.
    void contentHeightChanged();
    /// A new clip was opened.
    void contentWidthChanged();
    /// A new clip was opened, or decoded to its end; also sent where the source or the state
    /// resetState is set.
    void loadProgressChanged();

public Q_SLOTS:
    /// Fetches the frame at the position and repaints. Keeps the frame before where there is none.
    void frameReady();
    /// Plays; from the start where the position is at the end.
    void play();
    /// Pauses.
    void pause();
    /// The controller's state was set.
    void sourceChangedState();
    /// Pauses and moves to the first frame.
    void rewindToStart();
    /// The controller's position has moved.
    void controllerPositionChanged();

private:
    Q_DISABLE_COPY_MOVE(VLVideoComponent)

    void followWindow(QQuickWindow* window);
    void readSafeguards();
    void applySafeguards(const VLClipSafeguards& safeguards);
    void releaseRecords();
    void releaseClip(bool mayPlay);
    QString fileOf(const QString& name) const;

    /// Both are children of the item.
    VLVideoSource* m_source = nullptr;
    VLVideoController* m_controller = nullptr;
    /// Not owned; null until setSource() has found it.
    QPointer<VLView> m_view;
    /// What paint() draws.
    VLVideoFrame m_frame;
    /// As last reported.
    double m_lastHeight = 0.0;
    double m_lastProgress = 0.0;
    QString m_searchPath;
    QString m_sourceText;
    /// Whose settings the clip goes by, also once the item has lost its window.
    QPointer<VLManager> m_manager;
};

} // namespace Vidlets

#endif
