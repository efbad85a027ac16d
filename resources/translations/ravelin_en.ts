<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>AddSheetView</name>
    <message numerus="yes">
        <source>%n more to come</source>
        <translation>
            <numerusform>%n more to come</numerusform>
            <numerusform>%n more to come</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Ravelin</name>
    <message numerus="yes">
        <source>Waiting for %n file(s) to be complete.</source>
        <translation>
            <numerusform>Waiting for %n file to be complete.</numerusform>
            <numerusform>Waiting for %n files to be complete.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>The movie &apos;%1&apos; has %n audio track(s), none with the position %2.</source>
        <translation>
            <numerusform>The movie &apos;%1&apos; has %n audio track, none with the position %2.</numerusform>
            <numerusform>The movie &apos;%1&apos; has %n audio tracks, none with the position %2.</numerusform>
        </translation>
    </message>
</context>
</TS>
