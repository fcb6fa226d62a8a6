<?xml version="1.0" encoding="utf-8"?>
<!-- SPDX-FileCopyrightText: 2026 The Vidlets developers -->
<!-- SPDX-License-Identifier: MIT -->
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>VidletUI</name>
    <message>
        <location filename="../Control/tips.xml" line="7"/>
        <source>Pen</source>
        <extracomment>tool.pen, Control/tips.xml</extracomment>
        <translation>Stift</translation>
    </message>
    <message>
        <location filename="../Control/tips.xml" line="8"/>
        <source>Draws freehand, just as you move.</source>
        <extracomment>tool.pen, Control/tips.xml</extracomment>
        <translation>Zeichnet freihändig, so wie Sie sich bewegen.</translation>
    </message>
    <message>
        <location filename="../ui/VideoPlayer.qml" line="41"/>
        <source>Play</source>
        <extracomment>ui/VideoPlayer.qml</extracomment>
        <translation>Abspielen</translation>
    </message>
    <message>
        <location filename="../ui/VideoPlayer.qml" line="42"/>
        <source>Pause</source>
        <extracomment>ui/VideoPlayer.qml</extracomment>
        <translation>Anhalten</translation>
    </message>
    <message>
        <location filename="../ui/VideoPlayer.qml" line="43"/>
        <source>Paused</source>
        <extracomment>ui/VideoPlayer.qml</extracomment>
        <translation>Angehalten</translation>
    </message>
    <message>
        <location filename="../ui/VideoPlayer.qml" line="44"/>
        <source>Position</source>
        <extracomment>ui/VideoPlayer.qml</extracomment>
        <translation>Stelle</translation>
    </message>
</context>
</TS>
