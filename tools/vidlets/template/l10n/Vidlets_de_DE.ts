<?xml version="1.0" encoding="utf-8"?>
<!-- SPDX-FileCopyrightText: 2026 The Vidlets developers -->
<!-- SPDX-License-Identifier: MIT -->
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
  <context>
    <name>VidletUI</name>
    <message>
      <source>Pen</source>
      <translation>Stift</translation>
    </message>
    <message>
      <source>Draws freehand, just as you move.</source>
      <translation>Zeichnet freihändig, so wie Sie sich bewegen.</translation>
    </message>
    <message>
      <source>Play</source>
      <translation>Abspielen</translation>
    </message>
    <message>
      <source>Pause</source>
      <translation>Anhalten</translation>
    </message>
    <message>
      <source>Paused</source>
      <translation>Angehalten</translation>
    </message>
    <message>
      <source>Position</source>
      <translation>Stelle</translation>
    </message>
  </context>
</TS>
