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
  </context>
</TS>
