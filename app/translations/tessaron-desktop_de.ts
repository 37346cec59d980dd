<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
    <context>
        <name>AudioPanel</name>
        <message>
            <source>Audio</source>
            <translation>Audio</translation>
        </message>
        <message>
            <source>Sound for every CD player</source>
            <translation>Ton für jeden CD-Spieler</translation>
        </message>
        <message>
            <source>There is no track yet. Drop sound files into the window first.</source>
            <translation>Es gibt noch keinen Titel. Ziehen Sie zuerst Tondateien in das Fenster.</translation>
        </message>
        <message>
            <source>Audio CD</source>
            <translation>Audio-CD</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>Hinzufügen</translation>
        </message>
        <message>
            <source>%1 is left out: a CD has 99 tracks at most.</source>
            <translation>%1 wird ausgelassen: Eine CD hat höchstens 99 Titel.</translation>
        </message>
        <message>
            <source>No sound files were found.</source>
            <translation>Es wurden keine Tondateien gefunden.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be added.</source>
            <translation>
                <numerusform>%n Datei konnte nicht hinzugefügt werden.</numerusform>
                <numerusform>%n Dateien konnten nicht hinzugefügt werden.</numerusform>
            </translation>
        </message>
        <message>
            <source>Not all that the cue sheet says was taken.</source>
            <translation>Nicht alles, was im Cue-Sheet steht, wurde übernommen.</translation>
        </message>
        <message>
            <source>%1 has a pause of %2 s in front of track 1, which is left out: every disc begins with two seconds of silence.</source>
            <translation>%1 hat vor Titel 1 eine Pause von %2 s, die wegfällt: Jede Disc beginnt mit zwei Sekunden Stille.</translation>
        </message>
    </context>
    <context>
        <name>DataPanel</name>
        <message>
            <source>Data</source>
            <translation>Daten</translation>
        </message>
        <message>
            <source>Files and folders</source>
            <translation>Dateien und Ordner</translation>
        </message>
        <message>
            <source>The disc is empty. Drop files and folders into the window first.</source>
            <translation>Die Disc ist leer. Ziehen Sie zuerst Dateien und Ordner in das Fenster.</translation>
        </message>
        <message>
            <source>Save Images Into a New Folder</source>
            <translation>Abbilder in einem neuen Ordner speichern</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>Neuer Ordner:</translation>
        </message>
        <message>
            <source>Save Projects Into a New Folder</source>
            <translation>Projekte in einem neuen Ordner speichern</translation>
        </message>
    </context>
    <context>
        <name>DiscRowLook</name>
        <message>
            <source>File</source>
            <translation>Datei</translation>
        </message>
        <message>
            <source>Folder</source>
            <translation>Ordner</translation>
        </message>
        <message>
            <source>New folder</source>
            <translation>Neuer Ordner</translation>
        </message>
        <message>
            <source>Link</source>
            <translation>Verknüpfung</translation>
        </message>
        <message>
            <source>Device or pipe</source>
            <translation>Gerät oder Pipe</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>Die Datei fehlt: Sie wurde verschoben oder gelöscht.</translation>
        </message>
        <message>
            <source>You may not read this file.</source>
            <translation>Sie dürfen diese Datei nicht lesen.</translation>
        </message>
    </context>
    <context>
        <name>DiscWords</name>
        <message>
            <source>A file in the place of a disc, room for %1</source>
            <translation>Eine Datei anstelle einer Disc, Platz für %1</translation>
        </message>
        <message>
            <source>%1, room for %2. What is on it will be replaced.</source>
            <translation>%1, Platz für %2. Was darauf ist, wird ersetzt.</translation>
        </message>
        <message>
            <source>%1, blank, %2 free</source>
            <translation>%1, leer, %2 frei</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disc</translation>
        </message>
        <message>
            <source>There is no disc in the drive.</source>
            <translation>Im Laufwerk liegt keine Disc.</translation>
        </message>
        <message>
            <source>%1, written in part, %2 free</source>
            <translation>%1, teilweise beschrieben, %2 frei</translation>
        </message>
        <message>
            <source>%1, full. It can be erased.</source>
            <translation>%1, voll. Sie kann gelöscht werden.</translation>
        </message>
        <message>
            <source>%1: nothing can be added to it.</source>
            <translation>%1: Es kann nichts hinzugefügt werden.</translation>
        </message>
        <message>
            <source>%1: this drive can neither read nor write it.</source>
            <translation>%1: Dieses Laufwerk kann sie weder lesen noch schreiben.</translation>
        </message>
        <message>
            <source>The drive does not say what is in it.</source>
            <translation>Das Laufwerk sagt nicht, was darin liegt.</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/s</translation>
        </message>
        <message>
            <source>The disc has to be erased before it can be written again.</source>
            <translation>Die Disc muss dann gelöscht werden, bevor sie wieder beschrieben werden kann.</translation>
        </message>
        <message>
            <source>What is on the disc then is worth nothing, but it can be written again.</source>
            <translation>Was dann auf der Disc ist, ist wertlos, aber sie kann wieder beschrieben werden.</translation>
        </message>
        <message>
            <source>The disc cannot be used any more then.</source>
            <translation>Die Disc ist dann unbrauchbar.</translation>
        </message>
        <message>
            <source>%1, room for %2 in all</source>
            <translation>%1, insgesamt Platz für %2</translation>
        </message>
    </context>
    <context>
        <name>ImagePanel</name>
        <message>
            <source>Image</source>
            <translation>Abbild</translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… und %n weitere</numerusform>
                <numerusform>… und %n weitere</numerusform>
            </translation>
        </message>
        <message>
            <source>Images of discs that are there already</source>
            <translation>Abbilder von Discs, die es schon gibt</translation>
        </message>
        <message>
            <source>No image is open. Open one first.</source>
            <translation>Es ist kein Abbild geöffnet. Öffnen Sie zuerst eines.</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>%1 wird angesehen</translation>
        </message>
        <message>
            <source>%1: no filesystem was found in it.</source>
            <translation>%1: Es wurde kein Dateisystem darin gefunden.</translation>
        </message>
        <message numerus="yes">
            <source>The image is not as it should be in %n place(s).</source>
            <translation>
                <numerusform>Das Abbild ist an %n Stelle nicht, wie es sein sollte.</numerusform>
                <numerusform>Das Abbild ist an %n Stellen nicht, wie es sein sollte.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n Titel</numerusform>
                <numerusform>%n Titel</numerusform>
            </translation>
        </message>
        <message>
            <source>The description of the image was read with reservations.</source>
            <translation>Die Beschreibung des Abbilds wurde mit Vorbehalten gelesen.</translation>
        </message>
        <message>
            <source>Open Image</source>
            <translation>Abbild öffnen</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</source>
            <translation>Disc-Abbilder (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Alle Dateien (*)</translation>
        </message>
        <message>
            <source>Compare with a Folder</source>
            <translation>Mit einem Ordner vergleichen</translation>
        </message>
        <message>
            <source>Take All Tracks Out Into a Folder</source>
            <translation>Alle Titel in einen Ordner entnehmen</translation>
        </message>
        <message>
            <source>Take Track %1 Out</source>
            <translation>Titel %1 entnehmen</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>Neuer Ordner:</translation>
        </message>
        <message>
            <source>%1 tracks</source>
            <translation>%1, Titel</translation>
        </message>
        <message>
            <source>%1, track %2</source>
            <translation>%1, Titel %2</translation>
        </message>
        <message>
            <source>Choose files of one filesystem only.</source>
            <translation>Wählen Sie Dateien aus nur einem Dateisystem.</translation>
        </message>
        <message>
            <source>Take Files Out Into a Folder</source>
            <translation>Dateien in einen Ordner entnehmen</translation>
        </message>
        <message>
            <source>Choose files or folders of a filesystem first.</source>
            <translation>Wählen Sie zuerst Dateien oder Ordner eines Dateisystems.</translation>
        </message>
        <message>
            <source>Paste it in the file manager.</source>
            <translation>Fügen Sie es in der Dateiverwaltung ein.</translation>
        </message>
        <message>
            <source>Drag it once more to drop it.</source>
            <translation>Ziehen Sie es noch einmal, um es abzulegen.</translation>
        </message>
        <message>
            <source>Files are being taken out already. Wait for the end of that, or stop it.</source>
            <translation>Es werden schon Dateien entnommen. Warten Sie das Ende ab, oder halten Sie es an.</translation>
        </message>
    </context>
    <context>
        <name>JobOutcomes</name>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… und %n weitere</numerusform>
                <numerusform>… und %n weitere</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1: Die Datei fehlt</translation>
        </message>
        <message>
            <source>The folder %1 could not be read: %2</source>
            <translation>Der Ordner %1 konnte nicht gelesen werden: %2</translation>
        </message>
        <message>
            <source>The name of the disc could not be stored as it was asked for.</source>
            <translation>Der Name der Disc konnte nicht wie gewünscht gespeichert werden.</translation>
        </message>
        <message>
            <source>%1 was saved: %2, %3.</source>
            <translation>%1 wurde gespeichert: %2, %3.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n Datei</numerusform>
                <numerusform>%n Dateien</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be stored as they are.</source>
            <translation>
                <numerusform>%n Objekt konnte nicht unverändert gespeichert werden.</numerusform>
                <numerusform>%n Objekte konnten nicht unverändert gespeichert werden.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n folder(s) could not be read.</source>
            <translation>
                <numerusform>%n Ordner konnte nicht gelesen werden.</numerusform>
                <numerusform>%n Ordner konnten nicht gelesen werden.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are not on it: their files are missing.</source>
            <translation>
                <numerusform>%n Objekt ist nicht dabei: Die Datei fehlt.</numerusform>
                <numerusform>%n Objekte sind nicht dabei: Die Dateien fehlen.</numerusform>
            </translation>
        </message>
        <message>
            <source>Nothing is missing.</source>
            <translation>Nichts fehlt.</translation>
        </message>
        <message>
            <source>Nothing is missing; some names are changed in some filesystems.</source>
            <translation>Nichts fehlt; einige Namen sind in manchen Dateisystemen verändert.</translation>
        </message>
        <message numerus="yes">
            <source>The image differs from the files in %n place(s).</source>
            <translation>
                <numerusform>Das Abbild weicht an %n Stelle von den Dateien ab.</numerusform>
                <numerusform>Das Abbild weicht an %n Stellen von den Dateien ab.</numerusform>
            </translation>
        </message>
        <message>
            <source>The image was compared with the files: all %1 are the same.</source>
            <translation>Das Abbild wurde mit den Dateien verglichen: Alle %1 stimmen überein.</translation>
        </message>
        <message>
            <source>The name of the disc is another one.</source>
            <translation>Die Disc heißt anders.</translation>
        </message>
        <message numerus="yes">
            <source>The drive had to wait for data %n time(s).</source>
            <translation>
                <numerusform>Das Laufwerk musste %n-mal auf Daten warten.</numerusform>
                <numerusform>Das Laufwerk musste %n-mal auf Daten warten.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n Titel</numerusform>
                <numerusform>%n Titel</numerusform>
            </translation>
        </message>
        <message>
            <source>The writing was simulated, the disc is as it was: %1, %2, %3.</source>
            <translation>Das Schreiben wurde simuliert, die Disc ist unverändert: %1, %2, %3.</translation>
        </message>
        <message>
            <source>The disc was written: %1, %2, %3.</source>
            <translation>Die Disc wurde geschrieben: %1, %2, %3.</translation>
        </message>
        <message>
            <source>It was compared with what was to be written, and is the same.</source>
            <translation>Sie wurde mit dem verglichen, was zu schreiben war, und stimmt überein.</translation>
        </message>
        <message>
            <source>Something of the image is not on it.</source>
            <translation>Etwas vom Abbild ist nicht darauf.</translation>
        </message>
        <message numerus="yes">
            <source>Track %1, %2: the sound is damaged in %n place(s)</source>
            <translation>
                <numerusform>Titel %1, %2: Der Ton ist an %n Stelle beschädigt</numerusform>
                <numerusform>Titel %1, %2: Der Ton ist an %n Stellen beschädigt</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1 is shorter than four seconds, which many drives refuse</source>
            <translation>Titel %1 ist kürzer als vier Sekunden, was viele Laufwerke ablehnen</translation>
        </message>
        <message>
            <source>Some texts could not be put into the CD-TEXT.</source>
            <translation>Einige Texte konnten nicht in den CD-TEXT.</translation>
        </message>
        <message>
            <source>Some of the sound is damaged.</source>
            <translation>Ein Teil des Tons ist beschädigt.</translation>
        </message>
        <message>
            <source>Track %1: %2, %3</source>
            <translation>Titel %1: %2, %3</translation>
        </message>
        <message numerus="yes">
            <source>%n damaged sector(s)</source>
            <translation>
                <numerusform>%n beschädigter Sektor</numerusform>
                <numerusform>%n beschädigte Sektoren</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n sector(s) cut</source>
            <translation>
                <numerusform>%n Sektor gekürzt</numerusform>
                <numerusform>%n Sektoren gekürzt</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out.</source>
            <translation>
                <numerusform>%n Titel wurde entnommen.</numerusform>
                <numerusform>%n Titel wurden entnommen.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out, with damage.</source>
            <translation>
                <numerusform>%n Titel wurde entnommen, mit Schäden.</numerusform>
                <numerusform>%n Titel wurden entnommen, mit Schäden.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 takes the place of the file that the disc had.</source>
            <translation>%1 ersetzt die Datei, die die Disc hatte.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had are kept.</source>
            <translation>
                <numerusform>%n Datei, die sie hatte, ist geblieben.</numerusform>
                <numerusform>%n Dateien, die sie hatte, sind geblieben.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had were replaced.</source>
            <translation>
                <numerusform>%n Datei, die sie hatte, wurde ersetzt.</numerusform>
                <numerusform>%n Dateien, die sie hatte, wurden ersetzt.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is %2 now</source>
            <translation>%1 heißt jetzt %2</translation>
        </message>
        <message>
            <source>What was taken out before stays: %1.</source>
            <translation>Was vorher entnommen wurde, bleibt: %1.</translation>
        </message>
        <message>
            <source>Taken out of %1: %2.</source>
            <translation>Aus %1 entnommen: %2.</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be.</source>
            <translation>
                <numerusform>%n Objekt konnte nicht entnommen werden.</numerusform>
                <numerusform>%n Objekte konnten nicht entnommen werden.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) have another name.</source>
            <translation>
                <numerusform>%n Objekt hat einen anderen Namen.</numerusform>
                <numerusform>%n Objekte haben einen anderen Namen.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) do not have their dates.</source>
            <translation>
                <numerusform>%n Objekt hat nicht sein Datum.</numerusform>
                <numerusform>%n Objekte haben nicht ihr Datum.</numerusform>
            </translation>
        </message>
        <message>
            <source>Some of the sound, or of its texts, is not on it as it should be.</source>
            <translation>Etwas vom Ton oder von seinen Texten ist nicht so darauf, wie es sein sollte.</translation>
        </message>
        <message>
            <source>%1 is broken in places; silence stands for them</source>
            <translation>%1 ist stellenweise beschädigt; dort ist Stille</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) were converted.</source>
            <translation>
                <numerusform>%n Datei wurde umgewandelt.</numerusform>
                <numerusform>%n Dateien wurden umgewandelt.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be.</source>
            <translation>
                <numerusform>%n Datei konnte es nicht werden.</numerusform>
                <numerusform>%n Dateien konnten es nicht werden.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are broken in places.</source>
            <translation>
                <numerusform>%n Datei ist stellenweise beschädigt.</numerusform>
                <numerusform>%n Dateien sind stellenweise beschädigt.</numerusform>
            </translation>
        </message>
        <message>
            <source>Computers cannot be started from it any more.</source>
            <translation>Computer lassen sich davon nicht mehr starten.</translation>
        </message>
    </context>
    <context>
        <name>Media</name>
        <message>
            <source>Any size</source>
            <translation>Beliebige Größe</translation>
        </message>
        <message>
            <source>CD, 74 minutes</source>
            <translation>CD, 74 Minuten</translation>
        </message>
        <message>
            <source>CD, 80 minutes</source>
            <translation>CD, 80 Minuten</translation>
        </message>
        <message>
            <source>DVD</source>
            <translation>DVD</translation>
        </message>
        <message>
            <source>DVD, two layers</source>
            <translation>DVD, zwei Schichten</translation>
        </message>
        <message>
            <source>Blu-ray</source>
            <translation>Blu-ray</translation>
        </message>
        <message>
            <source>Blu-ray, two layers</source>
            <translation>Blu-ray, zwei Schichten</translation>
        </message>
    </context>
    <context>
        <name>Project</name>
        <message>
            <source>%1 cannot be opened: %2</source>
            <translation>%1 kann nicht geöffnet werden: %2</translation>
        </message>
        <message>
            <source>it is too long for a project</source>
            <translation>Für ein Projekt ist die Datei zu groß</translation>
        </message>
        <message>
            <source>it is not a project</source>
            <translation>Es ist kein Projekt</translation>
        </message>
        <message>
            <source>it was saved by a newer version of this program</source>
            <translation>Eine neuere Version dieses Programms hat es gespeichert</translation>
        </message>
        <message>
            <source>it names an item that cannot be on a disc</source>
            <translation>Es nennt ein Objekt, das nicht auf einer Disc sein kann</translation>
        </message>
        <message>
            <source>it has more than 99 tracks</source>
            <translation>es hat mehr als 99 Titel</translation>
        </message>
        <message>
            <source>it has a track without a file</source>
            <translation>es hat einen Titel ohne Datei</translation>
        </message>
        <message>
            <source>it is not a project, or it is damaged</source>
            <translation>Es ist kein Projekt oder ein beschädigtes</translation>
        </message>
    </context>
    <context>
        <name>ShareSaving</name>
        <message>
            <source>There is something of this name already. Name a new folder.</source>
            <translation>Unter diesem Namen gibt es schon etwas. Nennen Sie einen neuen Ordner.</translation>
        </message>
        <message>
            <source>The folder cannot be made: %1</source>
            <translation>Der Ordner kann nicht angelegt werden: %1</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>Disc</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are on no disc: their files are missing.</source>
            <translation>
                <numerusform>%n Objekt ist auf keiner Disc: Seine Datei fehlt.</numerusform>
                <numerusform>%n Objekte sind auf keiner Disc: Ihre Dateien fehlen.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConversion</name>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1: Die Datei fehlt</translation>
        </message>
        <message>
            <source>%1 is converted as a whole, not track by track</source>
            <translation>%1 wird als Ganzes umgewandelt, nicht Titel für Titel</translation>
        </message>
        <message>
            <source>There is no file to convert.</source>
            <translation>Es gibt keine Datei, die umgewandelt werden könnte.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConvertDialog</name>
        <message>
            <source>&amp;Titles and covers, too</source>
            <translation>Auch &amp;Titel und Titelbilder</translation>
        </message>
        <message>
            <source>Convert Sound Files</source>
            <translation>Tondateien umwandeln</translation>
        </message>
        <message>
            <source>WAVE (not compressed)</source>
            <translation>WAVE (nicht komprimiert)</translation>
        </message>
        <message>
            <source>AIFF (not compressed)</source>
            <translation>AIFF (nicht komprimiert)</translation>
        </message>
        <message>
            <source>MP3, about 128 kbit/s</source>
            <translation>MP3, etwa 128 kbit/s</translation>
        </message>
        <message>
            <source>MP3, about 160 kbit/s</source>
            <translation>MP3, etwa 160 kbit/s</translation>
        </message>
        <message>
            <source>MP3, 128 kbit/s throughout</source>
            <translation>MP3, durchgehend 128 kbit/s</translation>
        </message>
        <message>
            <source>MP3, 160 kbit/s throughout</source>
            <translation>MP3, durchgehend 160 kbit/s</translation>
        </message>
        <message>
            <source>MP3 files can be made when the program lame is installed.</source>
            <translation>MP3-Dateien können gemacht werden, wenn das Programm lame installiert ist.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are converted; the originals stay as they are.</source>
            <translation>
                <numerusform>%n Datei wird umgewandelt; das Original bleibt, wie es ist.</numerusform>
                <numerusform>%n Dateien werden umgewandelt; die Originale bleiben, wie sie sind.</numerusform>
            </translation>
        </message>
        <message>
            <source>&amp;Format:</source>
            <translation>&amp;Format:</translation>
        </message>
        <message>
            <source>C&amp;hoose…</source>
            <translation>&amp;Auswählen …</translation>
        </message>
        <message>
            <source>&amp;Into the folder:</source>
            <translation>&amp;In den Ordner:</translation>
        </message>
        <message>
            <source>Into the folder</source>
            <translation>In den Ordner</translation>
        </message>
        <message>
            <source>&amp;Convert</source>
            <translation>&amp;Umwandeln</translation>
        </message>
        <message>
            <source>Choose a Folder</source>
            <translation>Ordner auswählen</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioIntake</name>
        <message>
            <source>%1 kHz</source>
            <translation>%1 kHz</translation>
        </message>
        <message>
            <source>mono</source>
            <translation>mono</translation>
        </message>
        <message>
            <source>stereo</source>
            <translation>stereo</translation>
        </message>
        <message numerus="yes">
            <source>%n channels</source>
            <translation>
                <numerusform>%n Kanal</numerusform>
                <numerusform>%n Kanäle</numerusform>
            </translation>
        </message>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>Der Ordner %1 kann nicht gelesen werden: %2</translation>
        </message>
        <message>
            <source>%1 holds no sound.</source>
            <translation>%1 enthält keinen Ton.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTextDialog</name>
        <message>
            <source>CD-TEXT</source>
            <translation>CD-TEXT</translation>
        </message>
        <message>
            <source>&amp;Texts for players that show them:</source>
            <translation>&amp;Texte für Spieler, die sie anzeigen:</translation>
        </message>
        <message>
            <source>Catalogue &amp;number (EAN, 13 digits):</source>
            <translation>Katalog&amp;nummer (EAN, 13 Ziffern):</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>Titel</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>Interpret</translation>
        </message>
        <message>
            <source>Songwriter</source>
            <translation>Texter</translation>
        </message>
        <message>
            <source>Composer</source>
            <translation>Komponist</translation>
        </message>
        <message>
            <source>Arranger</source>
            <translation>Arrangeur</translation>
        </message>
        <message>
            <source>Message</source>
            <translation>Mitteilung</translation>
        </message>
        <message>
            <source>ISRC</source>
            <translation>ISRC</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disc</translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>Titel %1</translation>
        </message>
        <message>
            <source>%1 is not an ISRC: that has two letters, three letters or digits, and seven digits.</source>
            <translation>%1 ist kein ISRC: Der hat zwei Buchstaben, drei Buchstaben oder Ziffern und sieben Ziffern.</translation>
        </message>
        <message>
            <source>A catalogue number has 13 digits.</source>
            <translation>Eine Katalognummer hat 13 Ziffern.</translation>
        </message>
        <message>
            <source>&amp;Add Language</source>
            <translation>Sprache &amp;hinzufügen</translation>
        </message>
        <message>
            <source>&amp;Remove Language</source>
            <translation>Sprache &amp;entfernen</translation>
        </message>
        <message>
            <source>&amp;Language:</source>
            <translation>&amp;Sprache:</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTrackModel</name>
        <message numerus="yes">
            <source>Add %n Track(s)</source>
            <translation>
                <numerusform>%n Titel hinzufügen</numerusform>
                <numerusform>%n Titel hinzufügen</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Track(s)</source>
            <translation>
                <numerusform>%n Titel entfernen</numerusform>
                <numerusform>%n Titel entfernen</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Move %n Track(s)</source>
            <translation>
                <numerusform>%n Titel verschieben</numerusform>
                <numerusform>%n Titel verschieben</numerusform>
            </translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>Texte ändern</translation>
        </message>
        <message>
            <source>No.</source>
            <translation>Nr.</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>Titel</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>Interpret</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>Länge</translation>
        </message>
        <message>
            <source>File</source>
            <translation>Datei</translation>
        </message>
        <message>
            <source>Change Pauses</source>
            <translation>Pausen ändern</translation>
        </message>
        <message>
            <source>%1 s</source>
            <translation>%1 s</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>Die Datei fehlt: Sie wurde verschoben oder gelöscht.</translation>
        </message>
        <message>
            <source>ISRC %1</source>
            <translation>ISRC %1</translation>
        </message>
        <message>
            <source>Sound in the pause in front of it</source>
            <translation>Ton in der Pause davor</translation>
        </message>
        <message>
            <source>Change Pause</source>
            <translation>Pause ändern</translation>
        </message>
        <message>
            <source>Pause</source>
            <translation>Pause</translation>
        </message>
        <message>
            <source>Sound</source>
            <translation>Ton</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioView</name>
        <message>
            <source>&amp;Without a break where there is no pause</source>
            <translation>&amp;Ohne Lücke, wo keine Pause ist</translation>
        </message>
        <message>
            <source>Common &amp;loudness</source>
            <translation>Gemeinsame &amp;Lautheit</translation>
        </message>
        <message>
            <source>CD-&amp;TEXT</source>
            <translation>CD-TE&amp;XT</translation>
        </message>
        <message>
            <source>Add &amp;Tracks…</source>
            <translation>&amp;Titel hinzufügen …</translation>
        </message>
        <message>
            <source>Move &amp;Up</source>
            <translation>Nach &amp;oben</translation>
        </message>
        <message>
            <source>Move &amp;Down</source>
            <translation>Nach &amp;unten</translation>
        </message>
        <message>
            <source>&amp;Remove Tracks</source>
            <translation>Titel &amp;entfernen</translation>
        </message>
        <message>
            <source>&amp;Pause between tracks:</source>
            <translation>&amp;Pause zwischen Titeln:</translation>
        </message>
        <message>
            <source> s</source>
            <translation> s</translation>
        </message>
        <message>
            <source>Titles and performers for players that show them</source>
            <translation>Titel und Interpreten für Spieler, die sie anzeigen</translation>
        </message>
        <message>
            <source>Brings the whole disc to the loudness that is usual, in the same measure for all tracks</source>
            <translation>Bringt die ganze Disc auf die übliche Lautheit, alle Titel im selben Maß</translation>
        </message>
        <message>
            <source>T&amp;itle of the disc:</source>
            <translation>T&amp;itel der Disc:</translation>
        </message>
        <message>
            <source>P&amp;erformer:</source>
            <translation>I&amp;nterpret:</translation>
        </message>
        <message>
            <source>Tracks</source>
            <translation>Titel</translation>
        </message>
        <message>
            <source>Drop sound files here. They are played in this order.</source>
            <translation>Ziehen Sie Tondateien hierher. Sie werden in dieser Reihenfolge gespielt.</translation>
        </message>
        <message>
            <source>How full the disc is</source>
            <translation>Wie voll die Disc ist</translation>
        </message>
        <message>
            <source>Length of the disc</source>
            <translation>Länge der Disc</translation>
        </message>
        <message>
            <source>Kind of disc</source>
            <translation>Art der Disc</translation>
        </message>
        <message>
            <source>CD, %1 minutes</source>
            <translation>CD, %1 Minuten</translation>
        </message>
        <message>
            <source>%1: %2 too long</source>
            <translation>%1: %2 zu lang</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1, %2 frei</translation>
        </message>
        <message>
            <source>Add Tracks</source>
            <translation>Titel hinzufügen</translation>
        </message>
        <message>
            <source>&amp;CD-TEXT…</source>
            <translation>&amp;CD-TEXT …</translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>Texte ändern</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>Optionen ändern</translation>
        </message>
        <message>
            <source>Change the Kind of Disc</source>
            <translation>Art der Disc ändern</translation>
        </message>
        <message>
            <source>There is no sound device, so nothing can be heard. The disc can be made all the same.</source>
            <translation>Es gibt kein Tongerät, daher ist nichts zu hören. Die Disc lässt sich trotzdem herstellen.</translation>
        </message>
        <message>
            <source>Con&amp;vert…</source>
            <translation>Um&amp;wandeln …</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::BurnDialog</name>
        <message>
            <source>&amp;Look Again</source>
            <translation>&amp;Neu suchen</translation>
        </message>
        <message>
            <source>&amp;Compare the disc with the files afterwards</source>
            <translation>Disc danach mit den Dateien &amp;vergleichen</translation>
        </message>
        <message>
            <source>Only &amp;simulate: the laser stays off</source>
            <translation>Nur &amp;simulieren: Der Laser bleibt aus</translation>
        </message>
        <message>
            <source>&amp;Eject the disc at the end</source>
            <translation>Disc am Ende &amp;auswerfen</translation>
        </message>
        <message>
            <source>Burn a Disc</source>
            <translation>Disc brennen</translation>
        </message>
        <message>
            <source>&amp;Drive:</source>
            <translation>&amp;Laufwerk:</translation>
        </message>
        <message>
            <source>The disc in the drive</source>
            <translation>Die Disc im Laufwerk</translation>
        </message>
        <message>
            <source>Disc:</source>
            <translation>Disc:</translation>
        </message>
        <message>
            <source>S&amp;peed:</source>
            <translation>&amp;Tempo:</translation>
        </message>
        <message>
            <source>&amp;Burn</source>
            <translation>&amp;Brennen</translation>
        </message>
        <message>
            <source>E&amp;rase…</source>
            <translation>L&amp;öschen …</translation>
        </message>
        <message>
            <source>As fast as it goes</source>
            <translation>So schnell es geht</translation>
        </message>
        <message>
            <source>Erase it first, or put in another disc.</source>
            <translation>Löschen Sie sie zuerst, oder legen Sie eine andere Disc ein.</translation>
        </message>
        <message>
            <source>Put in another disc.</source>
            <translation>Legen Sie eine andere Disc ein.</translation>
        </message>
        <message>
            <source>It is too small: about %1 are to be written.</source>
            <translation>Sie ist zu klein: Etwa %1 sind zu schreiben.</translation>
        </message>
        <message>
            <source>The disc is being erased. That cannot be stopped.</source>
            <translation>Die Disc wird gelöscht. Das lässt sich nicht anhalten.</translation>
        </message>
        <message>
            <source>Looking for drives…</source>
            <translation>Laufwerke werden gesucht …</translation>
        </message>
        <message>
            <source>Looking at the disc…</source>
            <translation>Die Disc wird angesehen …</translation>
        </message>
        <message>
            <source>This computer has no optical drive. Connect one, and look again.</source>
            <translation>Dieser Computer hat kein optisches Laufwerk. Schließen Sie eines an, und suchen Sie neu.</translation>
        </message>
        <message>
            <source>Erase the Disc</source>
            <translation>Disc löschen</translation>
        </message>
        <message>
            <source>Everything on the disc will be lost.</source>
            <translation>Alles auf der Disc geht verloren.</translation>
        </message>
        <message>
            <source>Erasing takes a minute or two and cannot be stopped.</source>
            <translation>Das Löschen dauert ein bis zwei Minuten und lässt sich nicht anhalten.</translation>
        </message>
        <message>
            <source>&amp;Erase</source>
            <translation>&amp;Löschen</translation>
        </message>
        <message>
            <source>Erasing</source>
            <translation>Löschen</translation>
        </message>
        <message numerus="yes">
            <source>%n of its files will be replaced: %1</source>
            <translation>
                <numerusform>%n ihrer Dateien wird ersetzt: %1</numerusform>
                <numerusform>%n ihrer Dateien werden ersetzt: %1</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source> and %n more</source>
            <translation>
                <numerusform> und %n weitere</numerusform>
                <numerusform> und %n weitere</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) on it stay as they are; %1 are added.</source>
            <translation>
                <numerusform>%n Datei darauf bleibt, wie sie ist; %1 kommen hinzu.</numerusform>
                <numerusform>%n Dateien darauf bleiben, wie sie sind; %1 kommen hinzu.</numerusform>
            </translation>
        </message>
        <message>
            <source>What is on it stays as it is; %1 are added.</source>
            <translation>Was darauf ist, bleibt, wie es ist; %1 kommen hinzu.</translation>
        </message>
        <message>
            <source>Computers can be started from it now, and not any more afterwards.</source>
            <translation>Jetzt lassen sich Computer davon starten, danach nicht mehr.</translation>
        </message>
        <message>
            <source>&amp;Keep the disc open, so that more can be added to it</source>
            <translation>Disc &amp;offen lassen, damit mehr hinzukommen kann</translation>
        </message>
        <message>
            <source>Looking at what is on it…</source>
            <translation>Es wird nachgesehen, was darauf ist …</translation>
        </message>
        <message>
            <source>&amp;Keep what is on the disc, and add to it</source>
            <translation>Inhalt der Disc be&amp;halten und ergänzen</translation>
        </message>
        <message>
            <source>Sound takes a CD-R or CD-RW. Put one in.</source>
            <translation>Ton braucht eine CD-R oder CD-RW. Legen Sie eine ein.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityBar</name>
        <message>
            <source>Kind of disc</source>
            <translation>Art der Disc</translation>
        </message>
        <message>
            <source>What has to fit onto it</source>
            <translation>Worauf alles passen soll</translation>
        </message>
        <message>
            <source>Size of the disc</source>
            <translation>Größe der Disc</translation>
        </message>
        <message>
            <source>about %1</source>
            <translation>etwa %1</translation>
        </message>
        <message>
            <source>%1: %2 too much</source>
            <translation>%1: %2 zu viel</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1, %2 frei</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityMeter</name>
        <message>
            <source>How full the disc is</source>
            <translation>Wie voll die Disc ist</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DataView</name>
        <message>
            <source>Add &amp;Files…</source>
            <translation>&amp;Dateien hinzufügen …</translation>
        </message>
        <message>
            <source>Add F&amp;older…</source>
            <translation>&amp;Ordner hinzufügen …</translation>
        </message>
        <message>
            <source>New Fol&amp;der</source>
            <translation>&amp;Neuer Ordner</translation>
        </message>
        <message>
            <source>&amp;Paste Files</source>
            <translation>Dateien &amp;einfügen</translation>
        </message>
        <message>
            <source>&amp;Rename</source>
            <translation>&amp;Umbenennen</translation>
        </message>
        <message>
            <source>Re&amp;move from the Disc</source>
            <translation>Von der Disc ne&amp;hmen</translation>
        </message>
        <message>
            <source>Opt&amp;ions…</source>
            <translation>O&amp;ptionen …</translation>
        </message>
        <message>
            <source>Disc &amp;name:</source>
            <translation>&amp;Name der Disc:</translation>
        </message>
        <message>
            <source>Find by name</source>
            <translation>Nach Namen suchen</translation>
        </message>
        <message>
            <source>Files on the disc</source>
            <translation>Dateien auf der Disc</translation>
        </message>
        <message>
            <source>Drop files and folders here</source>
            <translation>Dateien und Ordner hierher ziehen</translation>
        </message>
        <message>
            <source>They go onto the disc as you see them here. The originals stay where they are.</source>
            <translation>Sie kommen so auf die Disc, wie Sie sie hier sehen. Die Originale bleiben, wo sie sind.</translation>
        </message>
        <message>
            <source>Some items could not be moved as they are.</source>
            <translation>Einige Objekte konnten nicht unverändert verschoben werden.</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>Hinzufügen</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) found</source>
            <translation>
                <numerusform>%n Objekt gefunden</numerusform>
                <numerusform>%n Objekte gefunden</numerusform>
            </translation>
        </message>
        <message>
            <source>Not everything was added as it is.</source>
            <translation>Nicht alles wurde unverändert hinzugefügt.</translation>
        </message>
        <message numerus="yes">
            <source>%n message(s).</source>
            <translation>
                <numerusform>%n Meldung.</numerusform>
                <numerusform>%n Meldungen.</numerusform>
            </translation>
        </message>
        <message>
            <source>Add Files</source>
            <translation>Dateien hinzufügen</translation>
        </message>
        <message>
            <source>Add Folder</source>
            <translation>Ordner hinzufügen</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s)</source>
            <translation>
                <numerusform>%n Objekt</numerusform>
                <numerusform>%n Objekte</numerusform>
            </translation>
        </message>
        <message>
            <source>There are no files to paste. Copy some in the file manager first.</source>
            <translation>Es gibt keine Dateien zum Einfügen. Kopieren Sie zuerst welche in der Dateiverwaltung.</translation>
        </message>
        <message>
            <source>Fi&amp;nd</source>
            <translation>Su&amp;chen</translation>
        </message>
        <message>
            <source>&amp;Check Names and Size</source>
            <translation>Namen und Größe p&amp;rüfen</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) cannot be stored as they are…</source>
            <translation>
                <numerusform>%n Objekt kann nicht unverändert gespeichert werden…</numerusform>
                <numerusform>%n Objekte können nicht unverändert gespeichert werden…</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n name(s) or detail(s) change…</source>
            <translation>
                <numerusform>%n Name oder Detail ändert sich…</numerusform>
                <numerusform>%n Namen oder Details ändern sich…</numerusform>
            </translation>
        </message>
        <message>
            <source>This is how filesystems of the disc differ from what is shown. Every system reads one that it knows.</source>
            <translation>So weichen Dateisysteme der Disc von dem ab, was gezeigt wird. Jedes System liest eines, das es kennt.</translation>
        </message>
        <message>
            <source>Everything</source>
            <translation>Alles</translation>
        </message>
        <message>
            <source>Names that change</source>
            <translation>Namen, die sich ändern</translation>
        </message>
        <message>
            <source>Missing or not storable</source>
            <translation>Fehlend oder nicht speicherbar</translation>
        </message>
        <message>
            <source>On the disc more than once</source>
            <translation>Mehrfach auf der Disc</translation>
        </message>
        <message>
            <source>What is shown</source>
            <translation>Was gezeigt wird</translation>
        </message>
        <message>
            <source>&amp;Split over Several Discs…</source>
            <translation>Auf mehrere Disc&amp;s verteilen …</translation>
        </message>
        <message>
            <source>These files of an image are there for a while only. Take them out into a folder, and add them from there.</source>
            <translation>Diese Dateien eines Abbilds sind nur für eine Weile da. Entnehmen Sie sie in einen Ordner und fügen Sie sie von dort hinzu.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DesktopNotifier</name>
        <message>
            <source>It did not succeed</source>
            <translation>Es ist nicht gelungen</translation>
        </message>
        <message>
            <source>Finished</source>
            <translation>Fertig</translation>
        </message>
        <message>
            <source>Finished, but not everything is as it should be</source>
            <translation>Fertig, aber nicht alles ist, wie es sein soll</translation>
        </message>
        <message>
            <source>Show</source>
            <translation>Anzeigen</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscDocument</name>
        <message>
            <source>Rename the Disc</source>
            <translation>Disc umbenennen</translation>
        </message>
        <message>
            <source>%1 is on the disc already.</source>
            <translation>%1 ist bereits auf der Disc.</translation>
        </message>
        <message>
            <source>%1 is called %2 on the disc: its name was taken.</source>
            <translation>%1 heißt auf der Disc %2: Der Name war schon vergeben.</translation>
        </message>
        <message numerus="yes">
            <source>Add %n Item(s)</source>
            <translation>
                <numerusform>%n Objekt hinzufügen</numerusform>
                <numerusform>%n Objekte hinzufügen</numerusform>
            </translation>
        </message>
        <message>
            <source>New Folder</source>
            <translation>Neuer Ordner</translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Item(s)</source>
            <translation>
                <numerusform>%n Objekt entfernen</numerusform>
                <numerusform>%n Objekte entfernen</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 cannot be moved into itself.</source>
            <translation>%1 kann nicht in sich selbst verschoben werden.</translation>
        </message>
        <message numerus="yes">
            <source>Move %n Item(s)</source>
            <translation>
                <numerusform>%n Objekt verschieben</numerusform>
                <numerusform>%n Objekte verschieben</numerusform>
            </translation>
        </message>
        <message>
            <source>A name cannot be empty.</source>
            <translation>Ein Name darf nicht leer sein.</translation>
        </message>
        <message>
            <source>A name cannot be %1: no system could open it.</source>
            <translation>Ein Name kann nicht %1 lauten: Kein System könnte ihn öffnen.</translation>
        </message>
        <message>
            <source>A name can have 255 bytes at most.</source>
            <translation>Ein Name darf höchstens 255 Bytes lang sein.</translation>
        </message>
        <message>
            <source>There is a %1 in this folder already.</source>
            <translation>In diesem Ordner gibt es bereits %1.</translation>
        </message>
        <message>
            <source>Rename %1</source>
            <translation>%1 umbenennen</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>Optionen ändern</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscPreview</name>
        <message>
            <source>%1 calls it %2</source>
            <translation>In %1: %2</translation>
        </message>
        <message>
            <source>Not in %1: %2</source>
            <translation>Nicht in %1: %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscTreeModel</name>
        <message>
            <source>Name</source>
            <translation>Name</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Größe</translation>
        </message>
        <message>
            <source>Kind</source>
            <translation>Art</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>Geändert</translation>
        </message>
        <message>
            <source>Folder on the disc</source>
            <translation>Ordner auf der Disc</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::FileLending</name>
        <message>
            <source>the files cannot be taken out into %1: %2</source>
            <translation>die Dateien können nicht nach %1 entnommen werden: %2</translation>
        </message>
        <message>
            <source>There is nothing to paste or drop.</source>
            <translation>Es gibt nichts, was eingefügt oder abgelegt werden könnte.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageContentsModel</name>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n Datei</numerusform>
                <numerusform>%n Dateien</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>Titel %1</translation>
        </message>
        <message>
            <source>%1, sound</source>
            <translation>%1, Ton</translation>
        </message>
        <message>
            <source>%1, data</source>
            <translation>%1, Daten</translation>
        </message>
        <message>
            <source>Name</source>
            <translation>Name</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Größe</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>Geändert</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageView</name>
        <message>
            <source>&amp;Open Image…</source>
            <translation>Abbild ö&amp;ffnen …</translation>
        </message>
        <message>
            <source>&amp;Compare with a Folder…</source>
            <translation>Mit einem Ordner &amp;vergleichen …</translation>
        </message>
        <message>
            <source>&amp;Take Out Tracks…</source>
            <translation>&amp;Titel entnehmen …</translation>
        </message>
        <message>
            <source>The image</source>
            <translation>Das Abbild</translation>
        </message>
        <message>
            <source>What the image holds</source>
            <translation>Was das Abbild enthält</translation>
        </message>
        <message>
            <source>Drop a disc image here</source>
            <translation>Ziehen Sie ein Disc-Abbild hierher</translation>
        </message>
        <message>
            <source>Open Image…</source>
            <translation>Abbild öffnen …</translation>
        </message>
        <message>
            <source>Take Out &amp;Files…</source>
            <translation>&amp;Dateien entnehmen …</translation>
        </message>
        <message>
            <source>Copy what is chosen, or everything, into a folder</source>
            <translation>Das Ausgewählte, oder alles, in einen Ordner kopieren</translation>
        </message>
        <message>
            <source>An ISO, BIN or VANT image, or a cue sheet. See what is in it, take files out, compare it with a folder, and write it to a disc.</source>
            <translation>Ein Abbild (ISO, BIN, VANT) oder ein Cue-Sheet. Sehen Sie, was darin ist, entnehmen Sie Dateien, vergleichen Sie es mit einem Ordner, und schreiben Sie es auf eine Disc.</translation>
        </message>
        <message>
            <source>Cop&amp;y Files</source>
            <translation>Dateien &amp;kopieren</translation>
        </message>
        <message>
            <source>Take what is chosen out, so that the file manager can paste it</source>
            <translation>Entnimmt das Ausgewählte, damit die Dateiverwaltung es einfügen kann</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobBar</name>
        <message>
            <source>Cancel</source>
            <translation>Abbrechen</translation>
        </message>
        <message>
            <source>Progress</source>
            <translation>Fortschritt</translation>
        </message>
        <message>
            <source>%1 — %2 · %3 so far</source>
            <translation>%1 – %2 · bisher %3</translation>
        </message>
        <message>
            <source>%1 — %2</source>
            <translation>%1 – %2</translation>
        </message>
        <message>
            <source>Cancelling…</source>
            <translation>Wird abgebrochen …</translation>
        </message>
        <message>
            <source>%1 so far</source>
            <translation>seit %1</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobRunner</name>
        <message>
            <source>A disc is being written. Stop?</source>
            <translation>Eine Disc wird geschrieben. Anhalten?</translation>
        </message>
        <message>
            <source>&amp;Stop</source>
            <translation>&amp;Anhalten</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>&amp;Go On</source>
            <translation>&amp;Weitermachen</translation>
        </message>
        <message>
            <source>An image is being made or read. Stop, and quit?</source>
            <translation>Ein Abbild wird gemacht oder gelesen. Anhalten und beenden?</translation>
        </message>
        <message>
            <source>A disc is being written. Stop, and quit?</source>
            <translation>Eine Disc wird geschrieben. Anhalten und beenden?</translation>
        </message>
        <message>
            <source>&amp;Stop and Quit</source>
            <translation>&amp;Anhalten und beenden</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ListDialog</name>
        <message>
            <source>Details</source>
            <translation>Einzelheiten</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::MainWindow</name>
        <message>
            <source>ISO image (.iso)</source>
            <translation>ISO-Abbild (.iso)</translation>
        </message>
        <message>
            <source>BIN image with cue sheet (.bin)</source>
            <translation>BIN-Abbild mit Cue-Sheet (.bin)</translation>
        </message>
        <message>
            <source>VANT image (.vant)</source>
            <translation>VANT-Abbild (.vant)</translation>
        </message>
        <message>
            <source>Kinds of disc</source>
            <translation>Arten von Discs</translation>
        </message>
        <message>
            <source>&amp;File</source>
            <translation>&amp;Datei</translation>
        </message>
        <message>
            <source>Save &amp;Image…</source>
            <translation>&amp;Abbild speichern …</translation>
        </message>
        <message>
            <source>Make a disc image of what is shown</source>
            <translation>Aus dem, was zu sehen ist, ein Abbild machen</translation>
        </message>
        <message>
            <source>&amp;Verify Images That Were Saved</source>
            <translation>Gespeicherte Abbilder &amp;prüfen</translation>
        </message>
        <message>
            <source>&amp;Quit</source>
            <translation>&amp;Beenden</translation>
        </message>
        <message>
            <source>&amp;Edit</source>
            <translation>&amp;Bearbeiten</translation>
        </message>
        <message>
            <source>&amp;Disc</source>
            <translation>D&amp;isc</translation>
        </message>
        <message>
            <source>Tools</source>
            <translation>Werkzeuge</translation>
        </message>
        <message>
            <source>Save Image</source>
            <translation>Abbild speichern</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>B&amp;rennen …</translation>
        </message>
        <message>
            <source>Write what is shown to a disc</source>
            <translation>Was gezeigt wird, auf eine Disc schreiben</translation>
        </message>
        <message>
            <source>S&amp;top</source>
            <translation>Anhal&amp;ten</translation>
        </message>
        <message>
            <source>Something else is being done. Wait for its end, or stop it.</source>
            <translation>Etwas anderes läuft noch. Warten Sie das Ende ab, oder halten Sie es an.</translation>
        </message>
        <message>
            <source>The files were not opened, since a dialog was open. Open them again.</source>
            <translation>Die Dateien wurden nicht geöffnet, weil ein Dialog offen war. Öffnen Sie sie noch einmal.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::NoticeBar</name>
        <message>
            <source>&amp;Details…</source>
            <translation>&amp;Einzelheiten …</translation>
        </message>
        <message>
            <source>Close this message</source>
            <translation>Meldung schließen</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::OptionsDialog</name>
        <message>
            <source>&amp;Hidden on the disc</source>
            <translation>Auf der Disc &amp;versteckt</translation>
        </message>
        <message>
            <source>&amp;Everywhere</source>
            <translation>&amp;Überall</translation>
        </message>
        <message>
            <source>Only for &amp;Macs (UDF and HFS+)</source>
            <translation>Nur für &amp;Macs (UDF und HFS+)</translation>
        </message>
        <message>
            <source>Only for &amp;PCs (ISO 9660 and Joliet)</source>
            <translation>Nur für &amp;PCs (ISO 9660 und Joliet)</translation>
        </message>
        <message>
            <source>Only in &amp;these filesystems:</source>
            <translation>Nur in &amp;diesen Dateisystemen:</translation>
        </message>
        <message>
            <source>Options</source>
            <translation>Optionen</translation>
        </message>
        <message>
            <source>Is found</source>
            <translation>Ist zu finden</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::PlayerProcess</name>
        <message>
            <source>The player is open already.</source>
            <translation>Der Player ist schon geöffnet.</translation>
        </message>
        <message>
            <source>The player is not installed.</source>
            <translation>Der Player ist nicht installiert.</translation>
        </message>
        <message>
            <source>The player cannot be started: %1</source>
            <translation>Der Player kann nicht gestartet werden: %1</translation>
        </message>
        <message>
            <source>The player ended unexpectedly.</source>
            <translation>Der Player wurde unerwartet beendet.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectActions</name>
        <message>
            <source>&amp;New Disc</source>
            <translation>&amp;Neue Disc</translation>
        </message>
        <message>
            <source>&amp;Open…</source>
            <translation>&amp;Öffnen …</translation>
        </message>
        <message>
            <source>Open &amp;Recent</source>
            <translation>&amp;Zuletzt geöffnet</translation>
        </message>
        <message>
            <source>&amp;Save Project</source>
            <translation>Projekt &amp;speichern</translation>
        </message>
        <message>
            <source>Save Project &amp;As…</source>
            <translation>Projekt speichern &amp;unter …</translation>
        </message>
        <message>
            <source>This is the disc that was open when the program ended unexpectedly. It is not saved.</source>
            <translation>Dies ist die Disc, die offen war, als das Programm unerwartet endete. Sie ist nicht gespeichert.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) of this project are missing: they were moved or removed.</source>
            <translation>
                <numerusform>%n Datei dieses Projekts fehlt: Sie wurde verschoben oder gelöscht.</numerusform>
                <numerusform>%n Dateien dieses Projekts fehlen: Sie wurden verschoben oder gelöscht.</numerusform>
            </translation>
        </message>
        <message>
            <source>New disc</source>
            <translation>Neue Disc</translation>
        </message>
        <message>
            <source>%1[*] — Tessaron</source>
            <translation>%1[*] – Tessaron</translation>
        </message>
        <message>
            <source>Open Project</source>
            <translation>Projekt öffnen</translation>
        </message>
        <message>
            <source>Projects (*.tessaron)</source>
            <translation>Projekte (*.tessaron)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Alle Dateien (*)</translation>
        </message>
        <message>
            <source>Save Project</source>
            <translation>Projekt speichern</translation>
        </message>
        <message>
            <source>The project was not saved: %1</source>
            <translation>Das Projekt wurde nicht gespeichert: %1</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>This disc is not saved as a project. Save it first?</source>
            <translation>Diese Disc ist nicht als Projekt gespeichert. Zuerst speichern?</translation>
        </message>
        <message>
            <source>Without saving, what you put together is lost. The files themselves stay.</source>
            <translation>Ohne Speichern geht verloren, was Sie zusammengestellt haben. Die Dateien selbst bleiben.</translation>
        </message>
        <message>
            <source>No projects yet</source>
            <translation>Noch keine Projekte</translation>
        </message>
        <message>
            <source>this program has no panel for discs of its kind</source>
            <translation>dieses Programm hat keinen Bereich für Discs dieser Art</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectKeeper</name>
        <message>
            <source>Try again in a moment.</source>
            <translation>Versuchen Sie es gleich noch einmal.</translation>
        </message>
        <message>
            <source>another project is being saved</source>
            <translation>ein anderes Projekt wird gerade gespeichert</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareBurning</name>
        <message>
            <source>Disc %1 of %2: %3</source>
            <translation>Disc %1 von %2: %3</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n disc(s) were written.</source>
            <translation>
                <numerusform>%1 von %n Disc wurde geschrieben.</numerusform>
                <numerusform>%1 von %n Discs wurden geschrieben.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is not written.</source>
            <translation>%1 ist nicht geschrieben.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareProjects</name>
        <message numerus="yes">
            <source>%n project(s) were saved.</source>
            <translation>
                <numerusform>%n Projekt wurde gespeichert.</numerusform>
                <numerusform>%n Projekte wurden gespeichert.</numerusform>
            </translation>
        </message>
        <message>
            <source>Open one after the other to burn it.</source>
            <translation>Öffnen Sie eines nach dem anderen, um es zu brennen.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareSaving</name>
        <message numerus="yes">
            <source>%n image(s) were saved.</source>
            <translation>
                <numerusform>%n Abbild wurde gespeichert.</numerusform>
                <numerusform>%n Abbilder wurden gespeichert.</numerusform>
            </translation>
        </message>
        <message>
            <source>They were not compared with the files.</source>
            <translation>Sie wurden nicht mit den Dateien verglichen.</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n image(s) were saved.</source>
            <translation>
                <numerusform>%1 von %n Abbild wurde gespeichert.</numerusform>
                <numerusform>%1 von %n Abbildern wurden gespeichert.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SoundBar</name>
        <message>
            <source>Place in the track</source>
            <translation>Stelle im Titel</translation>
        </message>
        <message>
            <source>Click where you want to listen</source>
            <translation>Klicken Sie, wo Sie hören wollen</translation>
        </message>
        <message>
            <source>Time</source>
            <translation>Zeit</translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 von %2</translation>
        </message>
        <message>
            <source>&amp;Pause</source>
            <translation>&amp;Pause</translation>
        </message>
        <message>
            <source>&amp;Listen</source>
            <translation>An&amp;hören</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SourceIntake</name>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>Der Ordner %1 kann nicht aufgelistet werden: %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SplitDialog</name>
        <message>
            <source>Split over Several Discs</source>
            <translation>Auf mehrere Discs verteilen</translation>
        </message>
        <message>
            <source>&amp;Kind of disc:</source>
            <translation>&amp;Art der Disc:</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disc</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Größe</translation>
        </message>
        <message>
            <source>The discs and what is on them</source>
            <translation>Die Discs und was darauf ist</translation>
        </message>
        <message>
            <source>&amp;Save Images…</source>
            <translation>Abbilder &amp;speichern …</translation>
        </message>
        <message>
            <source>Finding out what goes onto which disc…</source>
            <translation>Es wird ermittelt, was auf welche Disc kommt …</translation>
        </message>
        <message>
            <source>Splitting</source>
            <translation>Verteilen</translation>
        </message>
        <message numerus="yes">
            <source>%n disc(s) of %1 are needed.</source>
            <translation>
                <numerusform>%n Disc mit %1 wird gebraucht.</numerusform>
                <numerusform>%n Discs mit je %1 werden gebraucht.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are larger than such a disc, and on none.</source>
            <translation>
                <numerusform>%n Datei ist größer als eine solche Disc und auf keiner.</numerusform>
                <numerusform>%n Dateien sind größer als eine solche Disc und auf keiner.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: %2</source>
            <translation>%1: %2</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n Datei</numerusform>
                <numerusform>%n Dateien</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… und %n weitere</numerusform>
                <numerusform>… und %n weitere</numerusform>
            </translation>
        </message>
        <message>
            <source>Too large for such a disc</source>
            <translation>Zu groß für eine solche Disc</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>B&amp;rennen …</translation>
        </message>
        <message>
            <source>Save &amp;Projects…</source>
            <translation>&amp;Projekte speichern …</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::VideoView</name>
        <message>
            <source>any language</source>
            <translation>beliebige Sprache</translation>
        </message>
        <message>
            <source>for the visually impaired</source>
            <translation>für Sehbehinderte</translation>
        </message>
        <message>
            <source>comments</source>
            <translation>Kommentare</translation>
        </message>
        <message>
            <source>large letters</source>
            <translation>große Buchstaben</translation>
        </message>
        <message>
            <source>for children</source>
            <translation>für Kinder</translation>
        </message>
        <message>
            <source>for the hard of hearing</source>
            <translation>für Hörgeschädigte</translation>
        </message>
        <message>
            <source>always shown</source>
            <translation>immer gezeigt</translation>
        </message>
        <message>
            <source>of an unknown form</source>
            <translation>von unbekannter Art</translation>
        </message>
        <message>
            <source>Title menu</source>
            <translation>Menü der Titel</translation>
        </message>
        <message>
            <source>Main menu</source>
            <translation>Hauptmenü</translation>
        </message>
        <message>
            <source>Subtitle menu</source>
            <translation>Menü der Untertitel</translation>
        </message>
        <message>
            <source>Sound menu</source>
            <translation>Tonmenü</translation>
        </message>
        <message>
            <source>Angle menu</source>
            <translation>Menü der Blickwinkel</translation>
        </message>
        <message>
            <source>Chapter menu</source>
            <translation>Kapitelmenü</translation>
        </message>
        <message numerus="yes">
            <source>%n angle(s)</source>
            <translation>
                <numerusform>%n Blickwinkel</numerusform>
                <numerusform>%n Blickwinkel</numerusform>
            </translation>
        </message>
        <message>
            <source>Title %1</source>
            <translation>Titel %1</translation>
        </message>
        <message>
            <source>Chapter %1</source>
            <translation>Kapitel %1</translation>
        </message>
        <message>
            <source>at %1</source>
            <translation>bei %1</translation>
        </message>
        <message>
            <source>Sound %1</source>
            <translation>Ton %1</translation>
        </message>
        <message numerus="yes">
            <source>%n channel(s)</source>
            <translation>
                <numerusform>%n Kanal</numerusform>
                <numerusform>%n Kanäle</numerusform>
            </translation>
        </message>
        <message>
            <source>Subtitles %1</source>
            <translation>Untertitel %1</translation>
        </message>
        <message>
            <source>Sho&amp;w…</source>
            <translation>&amp;Zeigen …</translation>
        </message>
        <message>
            <source>&amp;Open Video DVD…</source>
            <translation>Video-DVD ö&amp;ffnen …</translation>
        </message>
        <message>
            <source>Choose a folder VIDEO_TS, or the one that holds it</source>
            <translation>Einen Ordner VIDEO_TS wählen, oder den, in dem er liegt</translation>
        </message>
        <message>
            <source>Open &amp;Image…</source>
            <translation>&amp;Abbild öffnen …</translation>
        </message>
        <message>
            <source>Choose an image of a video DVD</source>
            <translation>Ein Abbild einer Video-DVD wählen</translation>
        </message>
        <message>
            <source>&amp;Play</source>
            <translation>A&amp;bspielen</translation>
        </message>
        <message>
            <source>Play the disc, or the title or chapter that is chosen</source>
            <translation>Die Disc oder den gewählten Titel oder das gewählte Kapitel abspielen</translation>
        </message>
        <message>
            <source>Drop a video DVD here</source>
            <translation>Ziehen Sie eine Video-DVD hierher</translation>
        </message>
        <message>
            <source>A folder VIDEO_TS, or an image. See its titles, check and play it, save it as an image for players, and write it to a disc.</source>
            <translation>Ein Ordner VIDEO_TS oder ein Abbild. Sehen Sie die Titel, prüfen und spielen Sie die DVD ab, speichern Sie sie als Abbild für Player, und schreiben Sie sie auf eine Disc.</translation>
        </message>
        <message>
            <source>Open Video DVD…</source>
            <translation>Video-DVD öffnen …</translation>
        </message>
        <message>
            <source>The video DVD</source>
            <translation>Die Video-DVD</translation>
        </message>
        <message>
            <source>Show what is not as players need it</source>
            <translation>Zeigen, was nicht so ist, wie Player es brauchen</translation>
        </message>
        <message>
            <source>Content</source>
            <translation>Inhalt</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>Länge</translation>
        </message>
        <message>
            <source>Details</source>
            <translation>Einzelheiten</translation>
        </message>
        <message>
            <source>What the video DVD holds</source>
            <translation>Was die Video-DVD enthält</translation>
        </message>
        <message>
            <source>of the disc</source>
            <translation>der Disc</translation>
        </message>
        <message>
            <source>of title set %1</source>
            <translation>von Titelsatz %1</translation>
        </message>
        <message numerus="yes">
            <source>%n thing(s) are not as players need them.</source>
            <translation>
                <numerusform>%n Sache ist nicht so, wie Player sie brauchen.</numerusform>
                <numerusform>%n Dinge sind nicht so, wie Player sie brauchen.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>TextLanguages</name>
        <message>
            <source>Language %1</source>
            <translation>Sprache %1</translation>
        </message>
    </context>
    <context>
        <name>VideoPanel</name>
        <message>
            <source>Title %1: %2</source>
            <translation>Titel %1: %2</translation>
        </message>
        <message>
            <source>The disc is copy-protected: its contents are scrambled and cannot be played.</source>
            <translation>Die Disc ist kopiergeschützt: Ihr Inhalt ist verschlüsselt und kann nicht abgespielt werden.</translation>
        </message>
        <message>
            <source>Video DVD</source>
            <translation>Video-DVD</translation>
        </message>
        <message>
            <source>Folders VIDEO_TS for DVD players</source>
            <translation>Ordner VIDEO_TS für DVD-Player</translation>
        </message>
        <message>
            <source>No video DVD is open. Open one first.</source>
            <translation>Keine Video-DVD ist geöffnet. Öffnen Sie zuerst eine.</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>%1 wird angesehen</translation>
        </message>
        <message>
            <source>%1: %2, the longest of %3</source>
            <translation>%1: %2, der längste von %3</translation>
        </message>
        <message numerus="yes">
            <source>%n title(s)</source>
            <translation>
                <numerusform>%n Titel</numerusform>
                <numerusform>%n Titel</numerusform>
            </translation>
        </message>
        <message>
            <source>Open Video DVD</source>
            <translation>Video-DVD öffnen</translation>
        </message>
        <message>
            <source>Open Image of a Video DVD</source>
            <translation>Abbild einer Video-DVD öffnen</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf)</source>
            <translation>Disc-Abbilder (*.iso *.bin *.img *.vant *.udf)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Alle Dateien (*)</translation>
        </message>
        <message>
            <source>Names, lengths and backups of the files, and where they will lie on the disc, are as players need them. Pictures and sound are not checked.</source>
            <translation>Namen, Längen und Sicherungen der Dateien und ihre Lage auf der Disc sind so, wie Abspielgeräte sie brauchen. Bild und Ton sind nicht geprüft.</translation>
        </message>
        <message>
            <source>Its tables are as players need them. Where its files lie, and pictures and sound, are not checked.</source>
            <translation>Seine Tabellen sind so, wie Abspielgeräte sie brauchen. Die Lage der Dateien sowie Bild und Ton sind nicht geprüft.</translation>
        </message>
        <message>
            <source>It was not found out where the files will lie on the disc: %1</source>
            <translation>Es wurde nicht ermittelt, wo die Dateien auf der Disc liegen werden: %1</translation>
        </message>
    </context>
    <context>
        <name>Words</name>
        <message numerus="yes">
            <source>%n bytes</source>
            <translation>
                <numerusform>%n Byte</numerusform>
                <numerusform>%n Bytes</numerusform>
            </translation>
        </message>
        <message>
            <source>Preparing</source>
            <translation>Vorbereiten</translation>
        </message>
        <message>
            <source>Reading folders</source>
            <translation>Ordner lesen</translation>
        </message>
        <message>
            <source>Laying out the disc</source>
            <translation>Disc anlegen</translation>
        </message>
        <message>
            <source>Measuring the loudness</source>
            <translation>Lautheit messen</translation>
        </message>
        <message>
            <source>Writing</source>
            <translation>Schreiben</translation>
        </message>
        <message>
            <source>Comparing</source>
            <translation>Vergleichen</translation>
        </message>
        <message>
            <source>Waiting for the disk</source>
            <translation>Auf die Festplatte warten</translation>
        </message>
        <message>
            <source>Done</source>
            <translation>Fertig</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n Datei</numerusform>
                <numerusform>%n Dateien</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 von %2</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/s</translation>
        </message>
        <message>
            <source>%1 left</source>
            <translation>noch %1</translation>
        </message>
        <message>
            <source>Hidden on the disc.</source>
            <translation>Auf der Disc versteckt.</translation>
        </message>
        <message>
            <source>Only for Macs: UDF and HFS+.</source>
            <translation>Nur für Macs: UDF und HFS+.</translation>
        </message>
        <message>
            <source>Only for PCs: ISO 9660 and Joliet.</source>
            <translation>Nur für PCs: ISO 9660 und Joliet.</translation>
        </message>
        <message>
            <source>Only in %1.</source>
            <translation>Nur in %1.</translation>
        </message>
        <message>
            <source>Ending the disc, which can take minutes</source>
            <translation>Die Disc wird abgeschlossen, das kann Minuten dauern</translation>
        </message>
        <message>
            <source>untitled disc</source>
            <translation>Unbenannte Disc</translation>
        </message>
        <message>
            <source>untitled folder</source>
            <translation>Unbenannter Ordner</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>Disc</translation>
        </message>
    </context>
</TS>
