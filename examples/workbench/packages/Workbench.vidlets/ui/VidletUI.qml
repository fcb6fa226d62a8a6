// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// The rich tip. The popup takes the size of this item.
//
// A tip has the attributes "title", "shortcut" and "summary", and inside it, in any order and
// number, <p>, <item>, <picture source caption>, <clip source loop width height caption> and
// <link target>. Text may have markup, best written as CDATA, and variables of the host such as
// %(product)s.
Item {
    id: root

    readonly property var elements: vidlet ? vidlet.childElementList("") : []
    readonly property var blocks: elements.filter(element => isBlock(element))
    readonly property var links: elements.filter(element => isLink(element))
    readonly property string summary: tipWording.attributeOf(vidlet, "summary")
    readonly property bool isLong: ruler.text.length > 900

    readonly property int widest: Math.min(Screen.width * 0.9, tipTheme.textPx(isLong ? 520 : 340))
                                  + 2 * tipTheme.margin
    readonly property int headWidth: header.naturalWidth + tipTheme.gap + pin.implicitWidth
    readonly property int naturalWidth: Math.max(headWidth, ruler.implicitWidth)
                                        + 2 * tipTheme.margin + tipTheme.px(2)
    readonly property bool hasPicture: blocks.some(element => isPicture(element))
    readonly property int tallest: Math.max(tipTheme.px(240), Screen.height * 0.9)

    width: hasPicture ? widest : Math.min(widest, naturalWidth)
    height: Math.min(tallest, page.implicitHeight + footer.implicitHeight)

    // Keys that no item inside takes come here.
    focus: true
    Keys.onUpPressed: page.scrollBy(-tipTheme.textSize * 3)
    Keys.onDownPressed: page.scrollBy(tipTheme.textSize * 3)
    Keys.onPressed: event => {
        const pages = { [Qt.Key_PageUp]: -0.9, [Qt.Key_PageDown]: 0.9, [Qt.Key_Home]: -1e6,
                        [Qt.Key_End]: 1e6 };
        if (page.interactive && event.key in pages) {
            page.scrollBy(pages[event.key] * page.height);
            event.accepted = true;
        }
    }

    readonly property Item focused: Window.activeFocusItem
    onFocusedChanged: page.reveal(focused)

    LayoutMirroring.enabled: tipWording.isMirrored
    LayoutMirroring.childrenInherit: true

    function isBlock(element) {
        return element && (["p", "item"].includes(element.tagName) || isPicture(element));
    }

    function isPicture(element) {
        return element && ["picture", "clip"].includes(element.tagName);
    }

    // A name without slash and colon is a page of the documentation, which the host may not have.
    function isLink(element) {
        return element && element.tagName === "link"
            && (vidletView.documentationAvailable || /[\/:]/.test(element.attribute("target")));
    }

    function wholeText() {
        const indent = "\u2003\u2003";
        const lines = elements.filter(element => element && !isPicture(element))
                              .map(element => (element.tagName === "item" ? indent : "")
                                              + tipWording.contentOf(element));
        return [summary].concat(lines).join("<br>");
    }

    Theme { id: tipTheme }
    Wording { id: tipWording }

    // Tells how wide the text would be if nothing made it wrap, so that a short tip stays small.
    FormattedText {
        id: ruler
        visible: false
        theme: tipTheme
        text: root.wholeText()
        wrapMode: Text.NoWrap
    }

    Card {
        anchors.fill: parent
        theme: tipTheme
    }

    // A tip that is higher than the screen allows can be scrolled.
    Flickable {
        id: page

        readonly property int implicitHeight: column.implicitHeight + 2 * tipTheme.margin
                                              - tipTheme.px(5)

        anchors.top: parent.top
        anchors.bottom: footer.top
        anchors.left: parent.left
        anchors.right: parent.right
        contentHeight: implicitHeight
        interactive: contentHeight > height + 1
        boundsBehavior: Flickable.StopAtBounds
        clip: interactive

        function scrollBy(distance) {
            contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
        }

        // The keyboard must not lead to what cannot be seen.
        function reveal(item) {
            let above = item;
            while (above && above !== column) {
                above = above.parent;
            }
            if (!above || !interactive) {
                return;
            }
            // A link within a text does not know its place yet.
            if (item.findPlace) {
                item.findPlace();
            }
            const top = item.mapToItem(column, 0, 0).y + column.y - tipTheme.gap;
            const bottom = top + item.height + 2 * tipTheme.gap;
            scrollBy(Math.min(top - contentY, Math.max(0, bottom - contentY - height)));
        }

        Column {
            id: column
            x: tipTheme.margin
            y: tipTheme.margin - tipTheme.px(2)
            width: root.width - 2 * tipTheme.margin
            spacing: tipTheme.gap

            Item {
                width: column.width
                implicitHeight: Math.max(header.implicitHeight, pin.implicitHeight)

                Header {
                    id: header
                    anchors.left: parent.left
                    anchors.right: pin.left
                    anchors.rightMargin: tipTheme.gap
                    y: Math.max(0, Math.round((pin.height - firstLineHeight) / 2))
                    theme: tipTheme
                    wording: tipWording
                    title: tipWording.attributeOf(vidlet, "title")
                    shortcut: vidlet ? vidlet.attribute("shortcut") : ""
                }

                PinButton {
                    id: pin
                    anchors.right: parent.right
                    anchors.rightMargin: -tipTheme.px(4)
                    theme: tipTheme
                    wording: tipWording
                }
            }

            FormattedText {
                width: column.width
                visible: text !== ""
                theme: tipTheme
                color: tipTheme.faintText
                text: root.summary
            }

            Repeater {
                model: root.blocks

                Block {
                    required property VLXmlElement modelData

                    width: column.width
                    theme: tipTheme
                    wording: tipWording
                    element: modelData
                }
            }
        }
    }

    // Shows how far the page has been scrolled.
    Rectangle {
        anchors.right: parent.right
        anchors.rightMargin: tipTheme.px(3)
        visible: page.interactive
        width: tipTheme.px(4)
        radius: width / 2
        y: page.visibleArea.yPosition * page.height
        height: page.visibleArea.heightRatio * page.height
        color: tipTheme.border
    }

    Footer {
        id: footer
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 1
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.rightMargin: 1
        anchors.leftMargin: tipTheme.barWidth
        theme: tipTheme
        wording: tipWording
        links: root.links
    }
}
