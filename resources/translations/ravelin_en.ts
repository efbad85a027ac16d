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
    <name>LastQueueBar</name>
    <message numerus="yes">
        <source>%n movie(s) from last time</source>
        <translation>
            <numerusform>%n movie from last time</numerusform>
            <numerusform>%n movies from last time</numerusform>
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
    <message numerus="yes">
        <source>%n picture subtitle(s)</source>
        <translation>
            <numerusform>%n picture subtitle</numerusform>
            <numerusform>%n picture subtitles</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n styled subtitle(s)</source>
        <translation>
            <numerusform>%n styled subtitle</numerusform>
            <numerusform>%n styled subtitles</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n subtitle(s)</source>
        <translation>
            <numerusform>%n subtitle</numerusform>
            <numerusform>%n subtitles</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n cover picture(s)</source>
        <translation>
            <numerusform>%n cover picture</numerusform>
            <numerusform>%n cover pictures</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n further picture track(s)</source>
        <translation>
            <numerusform>%n further picture track</numerusform>
            <numerusform>%n further picture tracks</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n attachment(s)</source>
        <translation>
            <numerusform>%n attachment</numerusform>
            <numerusform>%n attachments</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n data track(s)</source>
        <translation>
            <numerusform>%n data track</numerusform>
            <numerusform>%n data tracks</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n more audio track(s)</source>
        <translation>
            <numerusform>%n more audio track</numerusform>
            <numerusform>%n more audio tracks</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n channels</source>
        <translation>
            <numerusform>%n channel</numerusform>
            <numerusform>%n channels</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) are missing</source>
        <translation>
            <numerusform>%n picture is missing</numerusform>
            <numerusform>%n pictures are missing</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n packet(s) of sound are missing</source>
        <translation>
            <numerusform>%n packet of sound is missing</numerusform>
            <numerusform>%n packets of sound are missing</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n subtitle line(s) are missing</source>
        <translation>
            <numerusform>%n subtitle line is missing</numerusform>
            <numerusform>%n subtitle lines are missing</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n subtitle line(s) are shown at another time</source>
        <translation>
            <numerusform>%n subtitle line is shown at another time</numerusform>
            <numerusform>%n subtitle lines are shown at another time</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source> (and %n more)</source>
        <translation>
            <numerusform> (and %n more)</numerusform>
            <numerusform> (and %n more)</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n chapter(s)</source>
        <translation>
            <numerusform>%n chapter</numerusform>
            <numerusform>%n chapters</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>no progress for %n second(s)</source>
        <translation>
            <numerusform>no progress for %n second</numerusform>
            <numerusform>no progress for %n seconds</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>no progress for %n minute(s)</source>
        <translation>
            <numerusform>no progress for %n minute</numerusform>
            <numerusform>no progress for %n minutes</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n converted</source>
        <translation>
            <numerusform>%n converted</numerusform>
            <numerusform>%n converted</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n damaged</source>
        <translation>
            <numerusform>%n damaged</numerusform>
            <numerusform>%n damaged</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n failed</numerusform>
            <numerusform>%n failed</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Removed %n movie(s) from the list</source>
        <translation>
            <numerusform>Removed %n movie from the list</numerusform>
            <numerusform>Removed %n movies from the list</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Left %n movie(s) out</source>
        <translation>
            <numerusform>Left %n movie out</numerusform>
            <numerusform>Left %n movies out</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Pause %n Movies</source>
        <translation>
            <numerusform>Pause %n Movie</numerusform>
            <numerusform>Pause %n Movies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Continue %n Movies</source>
        <translation>
            <numerusform>Continue %n Movie</numerusform>
            <numerusform>Continue %n Movies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Start %n Movies Now</source>
        <translation>
            <numerusform>Start %n Movie Now</numerusform>
            <numerusform>Start %n Movies Now</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Start %n Movies Next</source>
        <translation>
            <numerusform>Start %n Movie Next</numerusform>
            <numerusform>Start %n Movies Next</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Show %n Files</source>
        <translation>
            <numerusform>Show %n File</numerusform>
            <numerusform>Show %n Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Show %n Original Movies</source>
        <translation>
            <numerusform>Show %n Original Movie</numerusform>
            <numerusform>Show %n Original Movies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Try %n Movies Again</source>
        <translation>
            <numerusform>Try %n Movie Again</numerusform>
            <numerusform>Try %n Movies Again</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Copy %n Command Lines</source>
        <translation>
            <numerusform>Copy %n Command Line</numerusform>
            <numerusform>Copy %n Command Lines</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Copy %n Receipts</source>
        <translation>
            <numerusform>Copy %n Receipt</numerusform>
            <numerusform>Copy %n Receipts</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Remove %n Movies</source>
        <translation>
            <numerusform>Remove %n Movie</numerusform>
            <numerusform>Remove %n Movies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n Movies</source>
        <translation>
            <numerusform>%n Movie</numerusform>
            <numerusform>%n Movies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation>
            <numerusform>%n file</numerusform>
            <numerusform>%n files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n entry(s)</source>
        <translation>
            <numerusform>%n entry</numerusform>
            <numerusform>%n entries</numerusform>
        </translation>
    </message>
</context>
</TS>
