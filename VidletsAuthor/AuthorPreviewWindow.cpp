// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorPreviewWindow.h"

#include "AuthorCheck.h"
#include "AuthorPreviewStage.h"
#include "AuthorPreviewTree.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusBar>
#include <QTableWidget>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr std::array kScales{0.75, 1.0, 1.25, 1.5, 2.0, 3.0};
constexpr std::array kTextScales{0.75, 1.0, 1.25, 1.5, 2.0};
constexpr QSize kWindowSize(1100, 720);
constexpr int kTreeWidthPx = 320;
constexpr int kVariablesHeightPx = 130;
/// After the tip, which is what the author looks at.
constexpr std::chrono::milliseconds kCheckDelay(150);
/// Clips are decoded for a while after they have come up.
constexpr std::chrono::milliseconds kCostInterval(500);
constexpr double kBytesPerMegabyte = 1e6;

template <typename Scales> QComboBox* makeScales(const Scales& scales, QWidget* parent)
{
    auto* box = new QComboBox(parent);
    for (const double scale : scales)
        box->addItem(u"%1%"_s.arg(scale * 100), scale);
    box->setCurrentIndex(box->findData(1.0));
    return box;
}

bool isOfControlDirectory(const QString& path)
{
    return path.contains("/Control/"_L1);
}

QString ms(double value)
{
    return QString::number(value, 'f', value < 10 ? 1 : 0);
}

} // namespace

AuthorPreviewWindow::AuthorPreviewWindow(const QString& path, const AuthorTipList& list,
                                         const QString& editor)
    : m_path(path)
    , m_editor(editor)
    , m_list(list)
    , m_tree(new AuthorPreviewTree)
    , m_stage(new AuthorPreviewStage)
    , m_locale(new QComboBox)
    , m_scale(makeScales(kScales, nullptr))
    , m_textScale(makeScales(kTextScales, nullptr))
    , m_dark(new QCheckBox(u"&Dark"_s))
    , m_rightToLeft(new QCheckBox(u"&Right to left"_s))
    , m_simple(new QCheckBox(u"S&imple"_s))
    , m_shortcut(new QLineEdit)
    , m_variables(new QTableWidget(0, 2))
    , m_status(new QLabel)
{
    setWindowTitle(u"%1 - vidlets preview"_s.arg(path));
    // The tip may run the other way; the program stays as it is.
    setLayoutDirection(Qt::LeftToRight);
    makeVariables();
    auto* right = new QWidget;
    auto* layout = new QVBoxLayout(right);
    layout->addWidget(makeControls());
    layout->addWidget(m_stage, 1);
    layout->addWidget(m_variables);
    auto* splitter = new QSplitter;
    splitter->addWidget(m_tree);
    splitter->addWidget(right);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({kTreeWidthPx, kWindowSize.width() - kTreeWidthPx});
    setCentralWidget(splitter);
    m_status->setObjectName(u"status"_s);
    statusBar()->addWidget(m_status, 1);
    resize(kWindowSize);

    connect(m_tree, &AuthorPreviewTree::tipChosen, this,
            [this](const QString& root, const QString& key) {
                m_stage->setTip(root, key);
                renew();
            });
    connect(m_tree, &AuthorPreviewTree::placeActivated, this, &AuthorPreviewWindow::open);
    connect(m_stage, &AuthorPreviewStage::placeActivated, this, &AuthorPreviewWindow::open);
    connect(m_stage, &AuthorPreviewStage::costChanged, this, &AuthorPreviewWindow::showCost);
    connect(&m_watcher, &AuthorWatcher::changed, this, &AuthorPreviewWindow::filesChanged);
    m_checkTimer.setSingleShot(true);
    connect(&m_checkTimer, &QTimer::timeout, this, &AuthorPreviewWindow::check);
    connect(&m_costTimer, &QTimer::timeout, this, &AuthorPreviewWindow::showCost);
    m_costTimer.start(kCostInterval);
    m_stage->setPlaces(m_list.places);
    m_tree->setTips(m_list);
    fillLocales();
    watchFiles();
    checkSoon();
}

AuthorPreviewWindow::~AuthorPreviewWindow()
{
    if (m_checking)
        m_checking->wait();
}

QWidget* AuthorPreviewWindow::makeControls()
{
    auto* controls = new QWidget;
    auto* row = new QHBoxLayout(controls);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add = [row](const QString& label, QWidget* widget, const QString& name) {
        widget->setObjectName(name);
        if (!label.isEmpty()) {
            auto* text = new QLabel(label);
            text->setBuddy(widget);
            row->addWidget(text);
        }
        row->addWidget(widget);
    };
    add(u"&Language"_s, m_locale, u"locale"_s);
    add(QString(), m_dark, u"dark"_s);
    add(QString(), m_rightToLeft, u"rightToLeft"_s);
    add(u"&Scale"_s, m_scale, u"scale"_s);
    add(u"&Text"_s, m_textScale, u"textScale"_s);
    add(QString(), m_simple, u"simple"_s);
    add(u"S&hortcut"_s, m_shortcut, u"shortcut"_s);
    m_shortcut->setPlaceholderText(u"of the content"_s);
    for (QComboBox* box : {m_locale, m_scale, m_textScale})
        connect(box, &QComboBox::currentIndexChanged, this, &AuthorPreviewWindow::renew);
    for (QCheckBox* box : {m_dark, m_rightToLeft, m_simple})
        connect(box, &QCheckBox::toggled, this, &AuthorPreviewWindow::renew);
    connect(m_shortcut, &QLineEdit::textChanged, this, &AuthorPreviewWindow::renew);
    return controls;
}

void AuthorPreviewWindow::makeVariables()
{
    m_variables->setObjectName(u"variables"_s);
    m_variables->setHorizontalHeaderLabels({u"Variable"_s, u"Value"_s});
    m_variables->horizontalHeader()->setStretchLastSection(true);
    m_variables->verticalHeader()->hide();
    m_variables->setFixedHeight(kVariablesHeightPx);
    m_variables->hide();
    connect(m_variables, &QTableWidget::itemChanged, this, [this](const QTableWidgetItem* item) {
        const QTableWidgetItem* name = m_variables->item(item->row(), 0);
        if (!name || item->column() != 1)
            return;
        m_stage->setVariable(name->text(), item->text());
        renew();
    });
}

bool AuthorPreviewWindow::choose(const QString& key)
{
    return m_tree->choose(key);
}

/// All packages beside those that are shown, too: "search" may lead there.
void AuthorPreviewWindow::watchFiles()
{
    m_watcher.watch(m_list.places.roots, m_list.places.dataPaths);
}

void AuthorPreviewWindow::filesChanged(const QStringList& paths)
{
    const bool isControl = std::any_of(paths.cbegin(), paths.cend(), isOfControlDirectory);
    // The library keeps a translation that it has read, and an engine its singletons, which a
    // module of the package may have.
    const bool isKept = std::any_of(paths.cbegin(), paths.cend(), [](const QString& path) {
        return path.endsWith(".qm"_L1) || QFileInfo(path).dir().exists(u"qmldir"_s);
    });
    const bool isDraft = std::any_of(paths.cbegin(), paths.cend(),
                                     [](const QString& path) { return path.endsWith(".ts"_L1); });
    if (isKept || isControl)
        m_stage->forget();
    renew();
    if (isControl || isKept || isDraft)
        QTimer::singleShot(0, this, &AuthorPreviewWindow::readList);
    checkSoon();
}

void AuthorPreviewWindow::readList()
{
    QString unused;
    const auto list = AuthorTipList::read(m_path, unused);
    if (!list)
        return;
    const AuthorTipPlaces before = std::exchange(m_list, *list).places;
    m_tree->setTips(m_list);
    fillLocales();
    if (before.roots == m_list.places.roots && before.dataPaths == m_list.places.dataPaths)
        return;
    m_stage->setPlaces(m_list.places);
    watchFiles();
    renew();
}

void AuthorPreviewWindow::fillLocales()
{
    const QSignalBlocker blocker(m_locale);
    const QString before = m_locale->currentText();
    QStringList locales = m_list.localesWithDrafts();
    if (locales.isEmpty())
        locales.append(u"en_US"_s);
    m_locale->clear();
    m_locale->addItems(locales);
    const qsizetype kept = locales.indexOf(before.isEmpty() ? u"en_US"_s : before);
    m_locale->setCurrentIndex(static_cast<int>(qMax(qsizetype(0), kept)));
}

void AuthorPreviewWindow::renew()
{
    AuthorLook look;
    look.locale = m_locale->currentText();
    look.isDark = m_dark->isChecked();
    look.isRightToLeft = m_rightToLeft->isChecked();
    look.scale = m_scale->currentData().toDouble();
    look.textScale = m_textScale->currentData().toDouble();
    look.isSimple = m_simple->isChecked();
    m_stage->setLook(look);
    m_stage->setShortcut(m_shortcut->text());
    m_stage->renew();
    fillVariables();
}

void AuthorPreviewWindow::fillVariables()
{
    const QStringList names = m_stage->variables();
    QStringList before;
    QHash<QString, QString> values;
    for (int row = 0; row < m_variables->rowCount(); ++row) {
        before.append(m_variables->item(row, 0)->text());
        values.insert(before.constLast(), m_variables->item(row, 1)->text());
    }
    m_variables->setVisible(!names.isEmpty());
    // A cell may be about to be left by the keyboard.
    if (names == before)
        return;
    const QSignalBlocker blocker(m_variables);
    m_variables->setRowCount(0);
    for (const QString& name : names) {
        const int row = m_variables->rowCount();
        m_variables->insertRow(row);
        auto* item = new QTableWidgetItem(name);
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        m_variables->setItem(row, 0, item);
        m_variables->setItem(row, 1, new QTableWidgetItem(values.value(name)));
    }
}

void AuthorPreviewWindow::showCost()
{
    const AuthorTipCost cost = m_stage->cost();
    const QString picture = cost.firstPictureMs < 0.0 ? u"-"_s : ms(cost.firstPictureMs);
    m_status->setText(u"Lookup %1 ms   Load %2 ms   First picture %3 ms   Clips %4 MB"_s.arg(
        ms(cost.lookupMs), ms(cost.loadMs), picture,
        QString::number(static_cast<double>(cost.clipBytes) / kBytesPerMegabyte, 'f', 1)));
}

void AuthorPreviewWindow::checkSoon()
{
    m_checkTimer.start(kCheckDelay);
}

/// Beside the user interface, since large packages take seconds.
void AuthorPreviewWindow::check()
{
    if (m_checking) {
        m_checksAgain = true;
        return;
    }
    m_checking.reset(QThread::create([this, path = m_path] {
        AuthorCheck check;
        QString unused;
        QList<AuthorFinding> findings;
        if (check.add(path, unused))
            findings = check.run();
        QMetaObject::invokeMethod(
            this, [this, findings] { checked(findings); }, Qt::QueuedConnection);
    }));
    m_checking->start(QThread::LowPriority);
}

void AuthorPreviewWindow::checked(const QList<AuthorFinding>& findings)
{
    m_checking->wait();
    m_checking.reset();
    m_tree->setFindings(findings);
    if (std::exchange(m_checksAgain, false))
        check();
}

void AuthorPreviewWindow::open(const AuthorPlace& place)
{
    if (!AuthorEditor::open(m_editor, place))
        statusBar()->showMessage(u"\"%1\" could not be started."_s.arg(m_editor), 5000);
}

} // namespace Vidlets

#include "moc_AuthorPreviewWindow.cpp"
