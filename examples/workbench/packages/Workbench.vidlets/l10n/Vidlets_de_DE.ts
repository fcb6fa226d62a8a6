<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-FileCopyrightText: 2026 The Vidlets developers -->
<!-- SPDX-License-Identifier: MIT -->
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
  <context>
    <name>VidletUI</name>
    <message>
      <source>Pin</source>
      <translation>Anheften</translation>
    </message>
    <message>
      <source>Pinned</source>
      <translation>Angeheftet</translation>
    </message>
    <message>
      <source>Read more</source>
      <translation>Mehr dazu</translation>
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
    <message>
      <source>Ctrl</source>
      <translation>Strg</translation>
    </message>
    <message>
      <source>Shift</source>
      <translation>Umschalt</translation>
    </message>
    <message>
      <source>Del</source>
      <translation>Entf</translation>
    </message>
  </context>
</TS>
