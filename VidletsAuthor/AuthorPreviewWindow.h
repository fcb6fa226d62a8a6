// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORPREVIEWWINDOW_H
#define AUTHORPREVIEWWINDOW_H

#include "AuthorEditor.h"
#include "AuthorTipList.h"
#include "AuthorWatcher.h"

#include <QMainWindow>
#include <QThread>
#include <QTimer>

#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace Vidlets {

class AuthorPreviewStage;
class AuthorPreviewTree;

/// The window of the preview: what there is at the left, the chosen tip at the right, and always as
/// the files are by now.
class AuthorPreviewWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Shows the packages that @p path leads to, which was read as @p list. @p editor is the
    /// command of the author's editor; see AuthorEditor.
    AuthorPreviewWindow(const QString& path, const AuthorTipList& list, const QString& editor);
    ~AuthorPreviewWindow() override;

    /// Chooses the tip @p key, or the first one where that is empty. Returns whether there is one.
    bool choose(const QString& key);

private:
    Q_DISABLE_COPY_MOVE(AuthorPreviewWindow)

    QWidget* makeControls();
    void makeVariables();
    void watchFiles();
    void filesChanged(const QStringList& paths);
    void readList();
    void fillLocales();
    void renew();
    void fillVariables();
    void showCost();
    void checkSoon();
    void check();
    void checked(const QList<AuthorFinding>& findings);
    void open(const AuthorPlace& place);

    const QString m_path;
    const QString m_editor;
    AuthorTipList m_list;
    AuthorPreviewTree* m_tree;
    AuthorPreviewStage* m_stage;
    QComboBox* m_locale;
    QComboBox* m_scale;
    QComboBox* m_textScale;
    QCheckBox* m_dark;
    QCheckBox* m_rightToLeft;
    QCheckBox* m_simple;
    QLineEdit* m_shortcut;
    QTableWidget* m_variables;
    QLabel* m_status;
    AuthorWatcher m_watcher;
    QTimer m_checkTimer;
    QTimer m_costTimer;
    /// Null while nothing is checked.
    std::unique_ptr<QThread> m_checking;
    bool m_checksAgain = false;
};

} // namespace Vidlets

#endif
