<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-FileCopyrightText: 2026 The Vidlets developers -->
<!-- SPDX-License-Identifier: MIT -->
<TS version="2.1" language="ar_EG" sourcelanguage="en_US">
  <context>
    <name>VidletUI</name>
    <message>
      <source>QT_LAYOUT_DIRECTION</source>
      <translation>RTL</translation>
    </message>
    <message>
      <source>Pin</source>
      <translation>تثبيت</translation>
    </message>
    <message>
      <source>Pinned</source>
      <translation>مثبّت</translation>
    </message>
    <message>
      <source>Read more</source>
      <translation>للمزيد</translation>
    </message>
    <message>
      <source>Play</source>
      <translation>تشغيل</translation>
    </message>
    <message>
      <source>Pause</source>
      <translation>إيقاف مؤقت</translation>
    </message>
    <message>
      <source>Paused</source>
      <translation>متوقف مؤقتًا</translation>
    </message>
    <message>
      <source>Position</source>
      <translation>الموضع</translation>
    </message>
  </context>
</TS>
