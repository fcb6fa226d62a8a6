l<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- kept -->
<TS version="2.1" language="de_DE" sourceLanguage="en"><extra-a>x</extra-a>
<context><name>VidletUI</name>
<message id="i"><location filename="../a.xml" line="3"/><source>A &amp; <byte value="x1"/></source><comment>key a</comment><extracomment>e</extracomment><translatorcomment>t</translatorcomment><oldsource>o</oldsource><translation type="unfinished"></translation><extra-b>y</extra-b><userdata>u</userdata></message>
<message numerus="yes"><source>%n</source><translation><numerusform>1</numerusform><numerusform variants="yes"><lengthvariant>2</lengthvariant><lengthvariant>3</lengthvariant></numerusform></translation></message>
<message><source>G</source><translation type="vanished">Weg</translation></message>
</context></TS>
