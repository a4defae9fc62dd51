<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>Associations</name>
    <message>
        <source>Apply Associations?</source>
        <translation>Zuordnungen übernehmen?</translation>
    </message>
    <message>
        <source>Do you want to apply file association changes?</source>
        <translation>Möchten Sie die Änderungen der Dateizuordnungen übernehmen?</translation>
    </message>
    <message>
        <source>File Association Changes</source>
        <translation>Dateizuordnungen</translation>
    </message>
    <message>
        <source>File Association Changes have been made successfully</source>
        <translation>Die Dateizuordnungen wurden erfolgreich geändert</translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>lumora: unknown option &apos;%1&apos;, see lumora --help</source>
        <translation>lumora: unbekannte Option „%1“, siehe lumora --help</translation>
    </message>
    <message>
        <source>lumora: option &apos;--screenshot&apos; needs the name of a file, see lumora --help</source>
        <translation>lumora: die Option „--screenshot“ braucht den Namen einer Datei, siehe lumora --help</translation>
    </message>
    <message>
        <source>Usage: lumora [OPTION]... [FILE|FOLDER|LIST]...

Shows, orders and works on pictures and media files. Files and folders open in the
running program when there is one; several files of one start make one list.

  FILE                 picture, sound or film, as a path or a file:// URI
  FOLDER               its media files come into the selection list
  LIST                 list file (.Lsl, .Lst), see lumora-list(5)
  /editor, --editor    start in the editor
  /folder, --folder    start in the Browse Folder Viewer
  --screenshot FILE    write the window as a PNG file once its picture stands, and end
  -h, --help           show this text and end
  -v, --version        show the version and end
  --                   whatever follows is a file or folder
</source>
        <translation>Aufruf: lumora [OPTION]... [DATEI|ORDNER|LISTE]...

Zeigt, ordnet und bearbeitet Bilder und Mediendateien. Dateien und Ordner öffnen sich
im laufenden Programm, wenn es eines gibt; mehrere Dateien eines Aufrufs werden eine Liste.

  DATEI                Bild, Ton oder Film, als Pfad oder als URI file://
  ORDNER               seine Mediendateien kommen in die Auswahlliste
  LISTE                Listendatei (.Lsl, .Lst), siehe lumora-list(5)
  /editor, --editor    im Editor starten
  /folder, --folder    in der Ordneransicht starten
  --screenshot DATEI   das Fenster als PNG-Datei schreiben, sobald sein Bild steht, und enden
  -h, --help           diesen Text zeigen und enden
  -v, --version        die Version zeigen und enden
  --                   alles Folgende ist eine Datei oder ein Ordner
</translation>
    </message>
    <message>
        <source>lumora: unknown option &apos;%1&apos; for a conversion, see lumora --help</source>
        <translation>lumora: unbekannte Option „%1“ einer Umwandlung, siehe lumora --help</translation>
    </message>
    <message>
        <source>one or more formats</source>
        <translation>ein oder mehrere Formate</translation>
    </message>
    <message>
        <source>a folder</source>
        <translation>einen Ordner</translation>
    </message>
    <message>
        <source>one or more operations</source>
        <translation>eine oder mehrere Bearbeitungen</translation>
    </message>
    <message>
        <source>a number from 1 to 100</source>
        <translation>eine Zahl von 1 bis 100</translation>
    </message>
    <message>
        <source>a number from 0 to 4</source>
        <translation>eine Zahl von 0 bis 4</translation>
    </message>
    <message>
        <source>lumora: option &apos;%1&apos; needs %2, see lumora --help</source>
        <translation>lumora: die Option „%1“ braucht %2, siehe lumora --help</translation>
    </message>
    <message>
        <source>lumora: unknown format &apos;%1&apos;, the formats are %2</source>
        <translation>lumora: unbekanntes Format „%1“, die Formate sind %2</translation>
    </message>
    <message>
        <source>lumora: unknown operation &apos;%1&apos;, the operations are %2</source>
        <translation>lumora: unbekannte Bearbeitung „%1“, die Bearbeitungen sind %2</translation>
    </message>
    <message>
        <source>lumora: there is no file, folder or list to convert, see lumora --help</source>
        <translation>lumora: es gibt keine Datei, keinen Ordner und keine Liste umzuwandeln, siehe lumora --help</translation>
    </message>
    <message>
        <source>lumora: files of the formats &apos;%1&apos; and &apos;%2&apos; have the same names, add --folder-per-type</source>
        <translation>lumora: Dateien der Formate „%1“ und „%2“ heißen gleich, --folder-per-type trennt sie</translation>
    </message>
    <message>
        <source>
Converting without a window, see lumora(1):

  lumora --convert FORMAT[,FORMAT]... [OPTION]... FILE|FOLDER|LIST...

  --convert FORMATS      write every picture in each of these formats
  --to FOLDER            write there, not beside each picture; made when it is missing
  --operations LIST      change the pictures before, in this order: autocontrast,
                         autolevel, grayscale, colors256, emboss
  --diffuse              spread the error where colours are reduced
  --jpeg-quality N       1 to 100, 100 when it is not given
  --jpeg2000-quality N   1 to 100, 100 (nothing is lost) when it is not given
  --photo-cd-size N      size of a Photo CD from 0 (192x128) to 4 (3072x2048), else 2
  --overwrite            replace files that are there already
  --convert-folder       write into a folder &apos;convert&apos; below
  --folder-per-type      write into a folder for each format below
  --recursive            take folders with all that is below them
  --progress             tell the progress also where standard error is no terminal

  Formats: bmp, dcx, iff, jp2, jpg, mbm_comp, mbm, pbm, pcx, pgm, png, png_inter, ppm,
  psd, rgb, tga, tga_comp, tif, tif_jpeg, wbmp, xbm, xpm, xwd.
  Exit status: 0 all was written, 1 something was not, 2 wrong command line.
</source>
        <translation>
Umwandeln ohne Fenster, siehe lumora(1):

  lumora --convert FORMAT[,FORMAT]... [OPTION]... DATEI|ORDNER|LISTE...

  --convert FORMATE      jedes Bild in jedem dieser Formate schreiben
  --to ORDNER            dorthin schreiben, nicht neben jedes Bild; wird angelegt, wenn er fehlt
  --operations LISTE     die Bilder vorher bearbeiten, in dieser Reihenfolge: autocontrast,
                         autolevel, grayscale, colors256, emboss
  --diffuse              den Fehler verteilen, wo Farben verringert werden
  --jpeg-quality N       1 bis 100, ohne Angabe 100
  --jpeg2000-quality N   1 bis 100, ohne Angabe 100 (nichts geht verloren)
  --photo-cd-size N      Größe einer Photo CD von 0 (192x128) bis 4 (3072x2048), sonst 2
  --overwrite            vorhandene Dateien ersetzen
  --convert-folder       in einen Ordner „convert“ darunter schreiben
  --folder-per-type      in je einen Ordner für jedes Format darunter schreiben
  --recursive            Ordner mit allem nehmen, was unter ihnen liegt
  --progress             den Fortschritt auch melden, wo die Fehlerausgabe kein Terminal ist

  Formate: bmp, dcx, iff, jp2, jpg, mbm_comp, mbm, pbm, pcx, pgm, png, png_inter, ppm,
  psd, rgb, tga, tga_comp, tif, tif_jpeg, wbmp, xbm, xpm, xwd.
  Rückgabewert: 0 alles wurde geschrieben, 1 etwas nicht, 2 falsche Befehlszeile.
</translation>
    </message>
</context>
<context>
    <name>Conversion</name>
    <message>
        <source> - Apply Auto Contrast</source>
        <translation> - Kontrast automatisch anpassen</translation>
    </message>
    <message>
        <source> - Apply Auto Level</source>
        <translation> - Tonwerte automatisch anpassen</translation>
    </message>
    <message>
        <source> - Apply Gray Scale</source>
        <translation> - In Graustufen umwandeln</translation>
    </message>
    <message>
        <source> - Apply Change to 256 Colors</source>
        <translation> - Auf 256 Farben verringern</translation>
    </message>
    <message>
        <source> - Apply Emboss</source>
        <translation> - Relief anwenden</translation>
    </message>
    <message>
        <source>Overwrite file?</source>
        <translation>Datei überschreiben?</translation>
    </message>
    <message>
        <source>The file </source>
        <translation>Die Datei </translation>
    </message>
    <message>
        <source> already exists. Do you want to overwrite this file?</source>
        <translation> ist bereits vorhanden. Möchten Sie diese Datei überschreiben?</translation>
    </message>
</context>
<context>
    <name>ConvertCommand</name>
    <message>
        <source>is damaged, and only what could be read of it is written</source>
        <translation>ist beschädigt, geschrieben wird nur, was davon zu lesen war</translation>
    </message>
    <message>
        <source>another file of this run has the same name</source>
        <translation>eine andere Datei dieses Laufs hat denselben Namen</translation>
    </message>
    <message>
        <source>exists already and is left as it is</source>
        <translation>ist bereits vorhanden und bleibt, wie sie ist</translation>
    </message>
    <message>
        <source>is no list file</source>
        <translation>ist keine Listendatei</translation>
    </message>
    <message>
        <source>there are no pictures in this list</source>
        <translation>in dieser Liste sind keine Bilder</translation>
    </message>
    <message>
        <source>there are no pictures in this folder</source>
        <translation>in diesem Ordner sind keine Bilder</translation>
    </message>
    <message>
        <source>sounds and videos are not converted</source>
        <translation>Töne und Videos werden nicht umgewandelt</translation>
    </message>
    <message>
        <source>ended before all was done, %1 of %2 files are written</source>
        <translation>vorzeitig beendet, %1 von %2 Dateien sind geschrieben</translation>
    </message>
    <message>
        <source>%1 of %2 files were not written</source>
        <translation>%1 von %2 Dateien wurden nicht geschrieben</translation>
    </message>
</context>
<context>
    <name>DesktopDialogs</name>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 ist bereits vorhanden.
Möchten Sie die Datei ersetzen?</translation>
    </message>
</context>
<context>
    <name>Email</name>
    <message>
        <source>See attached pictures</source>
        <translation>Siehe angehängte Bilder</translation>
    </message>
    <message>
        <source>There is a graphic file attached. </source>
        <translation>Eine Grafikdatei ist angehängt. </translation>
    </message>
    <message>
        <source>Attachment file not found.</source>
        <translation>Anhang nicht gefunden.</translation>
    </message>
    <message>
        <source>The attachment for this email is not a valid file. The email message windows will still be displayed.  You may attach the item from within the email window.</source>
        <translation>Der Anhang dieser E-Mail ist keine gültige Datei. Das Fenster der E-Mail wird trotzdem angezeigt.  Sie können die Datei dort selbst anhängen.</translation>
    </message>
</context>
<context>
    <name>Engine</name>
    <message>
        <source>cannot be read</source>
        <translation>ist nicht lesbar</translation>
    </message>
    <message>
        <source>no decoder for this file</source>
        <translation>kein Decoder für diese Datei</translation>
    </message>
    <message>
        <source>cannot be read: </source>
        <translation>ist nicht lesbar: </translation>
    </message>
    <message>
        <source>the decoder gave no pixels</source>
        <translation>der Decoder lieferte keine Bildpunkte</translation>
    </message>
    <message>
        <source>there is no picture to write</source>
        <translation>es gibt kein Bild zu schreiben</translation>
    </message>
    <message>
        <source>only a reduced picture is at hand</source>
        <translation>nur ein verkleinertes Bild liegt vor</translation>
    </message>
    <message>
        <source>no writer for the format %1</source>
        <translation>kein Encoder für das Format %1</translation>
    </message>
    <message>
        <source>decoding took longer than %1 seconds</source>
        <translation>das Decodieren dauerte länger als %1 Sekunden</translation>
    </message>
    <message>
        <source>the decoder process gave an answer that makes no sense</source>
        <translation>der Decoderprozess gab eine sinnlose Antwort</translation>
    </message>
    <message>
        <source>no memory for the decoder process</source>
        <translation>kein Speicher für den Decoderprozess</translation>
    </message>
    <message>
        <source>no decoder process could be started</source>
        <translation>kein Decoderprozess konnte gestartet werden</translation>
    </message>
    <message>
        <source>decoding was stopped</source>
        <translation>das Decodieren wurde abgebrochen</translation>
    </message>
    <message>
        <source>the decoder process was ended</source>
        <translation>der Decoderprozess wurde beendet</translation>
    </message>
    <message>
        <source>the decoder process crashed (signal %1, %2)</source>
        <translation>der Decoderprozess ist abgestürzt (Signal %1, %2)</translation>
    </message>
    <message>
        <source>the decoder process ended by itself (status %1)</source>
        <translation>der Decoderprozess endete von selbst (Status %1)</translation>
    </message>
    <message>
        <source>there is no picture to change</source>
        <translation>es gibt kein Bild zu ändern</translation>
    </message>
    <message>
        <source>the picture is too large for this</source>
        <translation>das Bild ist dafür zu groß</translation>
    </message>
    <message>
        <source>no more than half of a picture can be clipped at either end</source>
        <translation>an jedem Ende kann höchstens die Hälfte eines Bilds abgeschnitten werden</translation>
    </message>
    <message>
        <source>there is no picture to reduce</source>
        <translation>es gibt kein Bild zu verringern</translation>
    </message>
    <message>
        <source>there is no palette of %1 colors at %2 bits</source>
        <translation>bei %2 Bit gibt es keine Palette mit %1 Farben</translation>
    </message>
    <message>
        <source>there are no pictures of %1 bits</source>
        <translation>es gibt keine Bilder mit %1 Bit</translation>
    </message>
    <message>
        <source>there is no palette of %1 bits</source>
        <translation>es gibt keine Palette mit %1 Bit</translation>
    </message>
    <message>
        <source>there is not enough memory for the palette</source>
        <translation>der Speicher reicht nicht für die Palette</translation>
    </message>
    <message>
        <source>no palette could be made (%1)</source>
        <translation>es ließ sich keine Palette bilden (%1)</translation>
    </message>
    <message>
        <source>There is no image.</source>
        <translation>Es gibt kein Bild.</translation>
    </message>
    <message>
        <source>The image could not be read completely.</source>
        <translation>Das Bild konnte nicht vollständig gelesen werden.</translation>
    </message>
    <message>
        <source>The image could not be changed: %1.</source>
        <translation>Das Bild konnte nicht geändert werden: %1.</translation>
    </message>
    <message>
        <source>The image could not be saved: %1.</source>
        <translation>Das Bild konnte nicht gespeichert werden: %1.</translation>
    </message>
</context>
<context>
    <name>FileActions</name>
    <message>
        <source>Copy files?</source>
        <translation>Dateien kopieren?</translation>
    </message>
    <message>
        <source>Are you sure you want to copy the select file(s) in the display list to: &apos;%1&apos;?</source>
        <translation>Möchten Sie die in der Anzeigeliste ausgewählten Dateien wirklich nach „%1“ kopieren?</translation>
    </message>
    <message>
        <source>Delete files?</source>
        <translation>Dateien löschen?</translation>
    </message>
    <message>
        <source>Are you sure you want to delete the selected file(s) in the display list from your computer?</source>
        <translation>Möchten Sie die in der Anzeigeliste ausgewählten Dateien wirklich von Ihrem Computer löschen?</translation>
    </message>
    <message>
        <source>Overwrite file?</source>
        <translation>Datei überschreiben?</translation>
    </message>
    <message>
        <source>File </source>
        <translation>Die Datei </translation>
    </message>
    <message>
        <source>already exists in the destination folder. </source>
        <translation>ist im Zielordner bereits vorhanden. </translation>
    </message>
    <message>
        <source>Do you want to overwrite the current file </source>
        <translation>Möchten Sie die vorhandene Datei überschreiben, </translation>
    </message>
    <message>
        <source>with this one?</source>
        <translation>mit dieser?</translation>
    </message>
    <message>
        <source>Move files?</source>
        <translation>Dateien verschieben?</translation>
    </message>
    <message>
        <source>File %1 is read-only!  Do you want to continue with the rest of the files?</source>
        <translation>Die Datei %1 ist schreibgeschützt!  Möchten Sie mit den übrigen Dateien fortfahren?</translation>
    </message>
    <message>
        <source>Files Copied</source>
        <translation>Dateien kopiert</translation>
    </message>
    <message>
        <source> Files have been successfully copied on your system!</source>
        <translation> Dateien wurden erfolgreich kopiert!</translation>
    </message>
    <message>
        <source>Files Moved</source>
        <translation>Dateien verschoben</translation>
    </message>
    <message>
        <source> Files have been successfully moved on your system!</source>
        <translation> Dateien wurden erfolgreich verschoben!</translation>
    </message>
    <message>
        <source>Files Deleted</source>
        <translation>Dateien gelöscht</translation>
    </message>
    <message>
        <source> Files have been successfully deleted from your system!</source>
        <translation> Dateien wurden erfolgreich von Ihrem System gelöscht!</translation>
    </message>
    <message>
        <source>A file needs a name.</source>
        <translation>Eine Datei braucht einen Namen.</translation>
    </message>
    <message>
        <source>The name may not hold the sign &quot;/&quot;: it stands between folders.</source>
        <translation>Der Name darf das Zeichen „/“ nicht enthalten: Es trennt Ordner.</translation>
    </message>
    <message>
        <source>This name belongs to a folder.</source>
        <translation>Dieser Name gehört einem Ordner.</translation>
    </message>
    <message>
        <source>The name is too long: %1 bytes, where %2 are the most.</source>
        <translation>Der Name ist zu lang: %1 Byte, höchstens %2 sind möglich.</translation>
    </message>
    <message>
        <source>There is a file &quot;%1&quot; already. Nothing was renamed.</source>
        <translation>Eine Datei „%1“ ist bereits vorhanden. Nichts wurde umbenannt.</translation>
    </message>
    <message>
        <source>You may not rename files in this folder.</source>
        <translation>Sie dürfen in diesem Ordner keine Dateien umbenennen.</translation>
    </message>
    <message>
        <source>The file is not there any more.</source>
        <translation>Die Datei ist nicht mehr da.</translation>
    </message>
    <message>
        <source>The file was not renamed.</source>
        <translation>Die Datei wurde nicht umbenannt.</translation>
    </message>
</context>
<context>
    <name>Files</name>
    <message>
        <source>cannot write</source>
        <translation>Schreiben nicht möglich:</translation>
    </message>
    <message>
        <source>cannot open the folder of</source>
        <translation>Öffnen des Ordners nicht möglich:</translation>
    </message>
    <message>
        <source>cannot look at</source>
        <translation>Ansehen nicht möglich:</translation>
    </message>
    <message>
        <source>%1 is not a regular file</source>
        <translation>%1 ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>cannot make a temporary file for</source>
        <translation>Anlegen einer Zwischendatei nicht möglich:</translation>
    </message>
    <message>
        <source>cannot look at the temporary file of</source>
        <translation>Ansehen der Zwischendatei nicht möglich:</translation>
    </message>
    <message>
        <source>cannot keep the mode of</source>
        <translation>Erhalten der Rechte nicht möglich:</translation>
    </message>
    <message>
        <source>cannot write to disk</source>
        <translation>Schreiben auf den Datenträger nicht möglich:</translation>
    </message>
    <message>
        <source>cannot replace</source>
        <translation>Ersetzen nicht möglich:</translation>
    </message>
    <message>
        <source>cannot write the folder to disk of</source>
        <translation>Schreiben des Ordners auf den Datenträger nicht möglich:</translation>
    </message>
    <message>
        <source>has changed while it was copied</source>
        <translation>hat sich während des Kopierens geändert</translation>
    </message>
    <message>
        <source>is a link that leads nowhere</source>
        <translation>ist ein Verweis, der ins Leere führt</translation>
    </message>
    <message>
        <source>cannot put in place</source>
        <translation>Einsetzen nicht möglich:</translation>
    </message>
    <message>
        <source>cannot find</source>
        <translation>Nicht zu finden:</translation>
    </message>
    <message>
        <source>is neither a regular file nor a link</source>
        <translation>ist weder eine gewöhnliche Datei noch ein Verweis</translation>
    </message>
    <message>
        <source>cannot read the link</source>
        <translation>Lesen des Verweises nicht möglich:</translation>
    </message>
    <message>
        <source>cannot move to</source>
        <translation>Verschieben nicht möglich nach</translation>
    </message>
    <message>
        <source>cannot make the link</source>
        <translation>Anlegen des Verweises nicht möglich:</translation>
    </message>
    <message>
        <source>has changed since it was copied</source>
        <translation>hat sich seit dem Kopieren geändert</translation>
    </message>
    <message>
        <source>cannot remove</source>
        <translation>Entfernen nicht möglich:</translation>
    </message>
    <message>
        <source>cannot rename to</source>
        <translation>Umbenennen nicht möglich in</translation>
    </message>
    <message>
        <source>cannot make</source>
        <translation>Anlegen nicht möglich:</translation>
    </message>
    <message>
        <source>cannot open</source>
        <translation>Öffnen nicht möglich:</translation>
    </message>
    <message>
        <source>%1 is larger than %2 bytes</source>
        <translation>%1 ist größer als %2 Byte</translation>
    </message>
    <message>
        <source>cannot read</source>
        <translation>Lesen nicht möglich:</translation>
    </message>
    <message>
        <source>not enough memory to read %1</source>
        <translation>der Speicher reicht nicht, um %1 zu lesen</translation>
    </message>
    <message>
        <source>cannot list</source>
        <translation>Auflisten nicht möglich:</translation>
    </message>
    <message>
        <source>cannot take as a file&apos;s name</source>
        <translation>Als Dateiname nicht möglich:</translation>
    </message>
    <message>
        <source>cannot find the folder of</source>
        <translation>Ordner nicht zu finden:</translation>
    </message>
    <message>
        <source>is the file itself</source>
        <translation>ist die Datei selbst</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>cannot write to disk the name</source>
        <translation>Schreiben des Namens auf den Datenträger nicht möglich:</translation>
    </message>
</context>
<context>
    <name>FolderSearch</name>
    <message>
        <source>Lumora V3</source>
        <translation>Lumora V3</translation>
    </message>
    <message>
        <source>No file types have been selected. Please select the desired file types and try again.</source>
        <translation>Es sind keine Dateitypen ausgewählt. Bitte wählen Sie die gewünschten Dateitypen aus und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>You&apos;ve filled the listbox. Search being abandoned...</source>
        <translation>Die Liste ist voll. Die Suche wird abgebrochen...</translation>
    </message>
    <message>
        <source>Search Returned Too Many Items....</source>
        <translation>Die Suche ergab zu viele Treffer....</translation>
    </message>
    <message>
        <source>The file search has returned more than 32767 items.  Please narrow the search either by selecting a lower level Folder or changing the file types to include in the search</source>
        <translation>Die Dateisuche ergab mehr als 32767 Treffer.  Bitte grenzen Sie die Suche ein, indem Sie einen tieferen Ordner wählen oder die gesuchten Dateitypen ändern</translation>
    </message>
    <message>
        <source> Directories Searched: %1 ---  Files Found:%2</source>
        <translation> Durchsuchte Ordner: %1 ---  Gefundene Dateien: %2</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <translation>%1 Byte</translation>
    </message>
    <message>
        <source>2 (1-bit)</source>
        <translation>2 (1 Bit)</translation>
    </message>
    <message>
        <source>16 (4-bit)</source>
        <translation>16 (4 Bit)</translation>
    </message>
    <message>
        <source>256 (8-bit)</source>
        <translation>256 (8 Bit)</translation>
    </message>
    <message>
        <source>65,536 (16-bit)</source>
        <translation>65.536 (16 Bit)</translation>
    </message>
    <message>
        <source>16.7 Million (24-bit)</source>
        <translation>16,7 Millionen (24 Bit)</translation>
    </message>
    <message>
        <source>4.29 Billion (32-bit)</source>
        <translation>4,29 Milliarden (32 Bit)</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
</context>
<context>
    <name>InternetTransfer</name>
    <message>
        <source>The server did not answer within %1 seconds.</source>
        <translation>Der Server hat nicht innerhalb von %1 Sekunden geantwortet.</translation>
    </message>
    <message>
        <source>The transfer was given up.</source>
        <translation>Die Übertragung wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The server&apos;s answer is too long.</source>
        <translation>Die Antwort des Servers ist zu lang.</translation>
    </message>
    <message>
        <source>The server&apos;s answer is not a text.</source>
        <translation>Die Antwort des Servers ist kein Text.</translation>
    </message>
    <message>
        <source>The address cannot be fetched.</source>
        <translation>Die Adresse lässt sich nicht abrufen.</translation>
    </message>
</context>
<context>
    <name>Language</name>
    <message>
        <source>en_US</source>
        <comment>Language and country of this translation, as de_DE</comment>
        <translation>de_DE</translation>
    </message>
</context>
<context>
    <name>ListFile</name>
    <message>
        <source>Lumora-Viewer Show List (*.Lsl)|*.Lsl|Lumora-Viewer (1.0) File List (*.Lst)|*.Lst|</source>
        <translation>Lumora-Viewer-Medienliste (*.Lsl)|*.Lsl|Lumora-Viewer-Dateiliste (1.0) (*.Lst)|*.Lst|</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Lumora V3.1 requires the presence of Microsoft Windows Media Player 9.</source>
        <translation>Lumora V3.1 setzt den Microsoft Windows Media Player 9 voraus.</translation>
    </message>
    <message>
        <source>On this system its part is played by the player module of Lumora, which stands on the libraries of mpv (package libmpv2). Install them with the package manager of the system, or install Lumora again, and start it once more.</source>
        <translation>Auf diesem System übernimmt dessen Aufgabe das Wiedergabemodul von Lumora, das auf den Bibliotheken von mpv beruht (Paket libmpv2). Installieren Sie diese mit der Paketverwaltung des Systems, oder installieren Sie Lumora neu, und starten Sie es noch einmal.</translation>
    </message>
    <message>
        <source>Older versions of the player are no longer supported: they do not tell for every type of file how long it is and when it has ended, and the Media Show waits for that.</source>
        <translation>Ältere Versionen des Players werden nicht mehr unterstützt: Sie melden nicht für jeden Dateityp, wie lang die Datei ist und wann sie zu Ende ist, und darauf wartet die Medienschau.</translation>
    </message>
    <message>
        <source>Missing Windows Media Player 9 On System:</source>
        <translation>Windows Media Player 9 fehlt auf dem System:</translation>
    </message>
    <message>
        <source>lumora: there is no display to show windows on</source>
        <translation>lumora: es gibt keine grafische Anzeige für die Fenster</translation>
    </message>
    <message>
        <source>lumora: the running program does not answer</source>
        <translation>lumora: das laufende Programm antwortet nicht</translation>
    </message>
</context>
<context>
    <name>MediaShow</name>
    <message>
        <source>Rest Shuffle History</source>
        <translation>Zufallsverlauf zurücksetzen</translation>
    </message>
    <message>
        <source>You have &apos;Shuffle Mode&apos; enabled under the &apos;Media Show&apos; menu and have not enabled &apos;Loop Around Mode&apos; under the &apos;Media Show menu.  Do you want to &apos;Reset the Shuffle History Media List&apos;?  This will allow you to continue to shuffle thru the media list.  If you don&apos;t choose to reset the History List at this time you will not be able to continue to shuffle through the images.  However you may choose to &apos;Reset the Shuffle History Media List&apos; under the &apos;Media Show&apos; menu at a later time.</source>
        <translation>Im Menü „Medienschau“ ist der „Zufallsmodus“ eingeschaltet, nicht aber der „Endlosmodus“.  Möchten Sie den Zufallsverlauf zurücksetzen?  Dann geht es in zufälliger Reihenfolge weiter durch die Medienliste.  Setzen Sie den Verlauf jetzt nicht zurück, so kommen im Zufallsmodus keine weiteren Bilder.  Sie können den „Zufallsverlauf zurücksetzen“ aber auch später im Menü „Medienschau“.</translation>
    </message>
    <message>
        <source>Reset Shuffle History</source>
        <translation>Zufallsverlauf zurücksetzen</translation>
    </message>
    <message>
        <source>Shuffle Media History List Reset</source>
        <translation>Der Zufallsverlauf wurde zurückgesetzt</translation>
    </message>
</context>
<context>
    <name>MediaTypes</name>
    <message>
        <source>(.ASF) - Active Streaming Format</source>
        <translation>(.ASF) - Active Streaming Format</translation>
    </message>
    <message>
        <source>(.ASX) - Active Streaming Format</source>
        <translation>(.ASX) - Active Streaming Format</translation>
    </message>
    <message>
        <source>(.WMA) - Windows Media Audio</source>
        <translation>(.WMA) - Windows Media Audio</translation>
    </message>
    <message>
        <source>(.WMV) - Windows Media Video</source>
        <translation>(.WMV) - Windows Media Video</translation>
    </message>
    <message>
        <source>(.AVI) - Windows Audio Visual Format</source>
        <translation>(.AVI) - Windows-Audio-Video-Format</translation>
    </message>
    <message>
        <source>(.WAV) - Windows Wave Audio Format</source>
        <translation>(.WAV) - Windows-Wave-Audioformat</translation>
    </message>
    <message>
        <source>(.MPG) - MPEG Movie Format</source>
        <translation>(.MPG) - MPEG-Filmformat</translation>
    </message>
    <message>
        <source>(.MP2) - MPEG Audio Layer 2</source>
        <translation>(.MP2) - MPEG Audio Layer 2</translation>
    </message>
    <message>
        <source>(.MP3) - MPEG Audio Layer 3</source>
        <translation>(.MP3) - MPEG Audio Layer 3</translation>
    </message>
    <message>
        <source>(.MID) - MIDI Music Format</source>
        <translation>(.MID) - MIDI-Musikformat</translation>
    </message>
    <message>
        <source>192 W  x  128 H</source>
        <translation>192 B  x  128 H</translation>
    </message>
    <message>
        <source>384 W  x  256 H</source>
        <translation>384 B  x  256 H</translation>
    </message>
    <message>
        <source>768 W  x  512 H</source>
        <translation>768 B  x  512 H</translation>
    </message>
    <message>
        <source>1536 W  x  1024 H</source>
        <translation>1536 B  x  1024 H</translation>
    </message>
    <message>
        <source>3072 W  x  2048 H</source>
        <translation>3072 B  x  2048 H</translation>
    </message>
    <message>
        <source>Motion</source>
        <translation>Video</translation>
    </message>
</context>
<context>
    <name>MenuBackgroundBox</name>
    <message>
        <source>Menu Background</source>
        <translation>Hintergrund des Menüs</translation>
    </message>
    <message>
        <source>Background picture of the menu</source>
        <translation>Hintergrundbild des Menüs</translation>
    </message>
    <message>
        <source>Choose &amp;Picture...</source>
        <translation>Bild aus&amp;wählen...</translation>
    </message>
    <message>
        <source>Shows a picture of yours behind the menu of the main window</source>
        <translation>Zeigt ein Bild von Ihnen hinter dem Menü der Hauptansicht</translation>
    </message>
    <message>
        <source>Pre&amp;vious Pattern</source>
        <translation>&amp;Vorheriges Muster</translation>
    </message>
    <message>
        <source>Ne&amp;xt Pattern</source>
        <translation>&amp;Nächstes Muster</translation>
    </message>
    <message>
        <source>&amp;No Background</source>
        <translation>&amp;Kein Hintergrund</translation>
    </message>
    <message>
        <source>The background picture of the menu could not be removed.</source>
        <translation>Das Hintergrundbild des Menüs konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>The picture %1 could not be made the background of the menu.</source>
        <translation>Das Bild %1 konnte nicht zum Hintergrund des Menüs gemacht werden.</translation>
    </message>
    <message>
        <source>(none)</source>
        <translation>(keines)</translation>
    </message>
    <message>
        <source>All Files (*.bmp,*.rle,*.jpg,*.gif)|*.bmp;*.rle;*.jpg;*.gif|</source>
        <translation>Alle Dateien (*.bmp,*.rle,*.jpg,*.gif)|*.bmp;*.rle;*.jpg;*.gif|</translation>
    </message>
</context>
<context>
    <name>PlayerControls</name>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Sound on</source>
        <translation>Ton an</translation>
    </message>
    <message>
        <source>Sound off</source>
        <translation>Ton aus</translation>
    </message>
</context>
<context>
    <name>QMainWindow</name>
    <message>
        <source>Main Toolbar</source>
        <translation>Hauptsymbolleiste</translation>
    </message>
    <message>
        <source>More commands</source>
        <translation>Weitere Befehle</translation>
    </message>
</context>
<context>
    <name>SaveFormats</name>
    <message>
        <source>(.BMP) Microsoft WIndows Bitmap</source>
        <translation>(.BMP) Microsoft Windows Bitmap</translation>
    </message>
    <message>
        <source>(.DCX) DCX Format </source>
        <translation>(.DCX) DCX-Format </translation>
    </message>
    <message>
        <source>(.IFF) Commodore-Amiga IFF Format </source>
        <translation>(.IFF) Commodore-Amiga-IFF-Format </translation>
    </message>
    <message>
        <source>(.JP2) - Joint Photographics Experts Group 2000</source>
        <translation>(.JP2) - Joint Photographic Experts Group 2000</translation>
    </message>
    <message>
        <source>(.JPG) - Joint Photographics Experts Group</source>
        <translation>(.JPG) - Joint Photographic Experts Group</translation>
    </message>
    <message>
        <source>(.MBM) Psion MultiBitMap Compressed Format </source>
        <translation>(.MBM) Psion MultiBitMap, komprimiert </translation>
    </message>
    <message>
        <source>(.MBM) Psion MultiBitMap UnCompressed Format</source>
        <translation>(.MBM) Psion MultiBitMap, unkomprimiert</translation>
    </message>
    <message>
        <source>(.PBM) PBM Format </source>
        <translation>(.PBM) PBM-Format </translation>
    </message>
    <message>
        <source>(.PCX) PCX Format </source>
        <translation>(.PCX) PCX-Format </translation>
    </message>
    <message>
        <source>(.PGM) PGM Format </source>
        <translation>(.PGM) PGM-Format </translation>
    </message>
    <message>
        <source>(.PNG) PNG Format </source>
        <translation>(.PNG) PNG-Format </translation>
    </message>
    <message>
        <source>(.PNG) PNG Format  - Interlaced</source>
        <translation>(.PNG) PNG-Format  - Interlaced</translation>
    </message>
    <message>
        <source>(.PPM) PPM Format </source>
        <translation>(.PPM) PPM-Format </translation>
    </message>
    <message>
        <source>(.PSD) Adobe Photoshop </source>
        <translation>(.PSD) Adobe Photoshop </translation>
    </message>
    <message>
        <source>(.RGB) SGI Format </source>
        <translation>(.RGB) SGI-Format </translation>
    </message>
    <message>
        <source>(.TGA) TGA UnCompressed Format </source>
        <translation>(.TGA) TGA-Format, unkomprimiert </translation>
    </message>
    <message>
        <source>(.TGA) TGA Compressed Format </source>
        <translation>(.TGA) TGA-Format, komprimiert </translation>
    </message>
    <message>
        <source>(.TIF) TIFF UnCompressed Format </source>
        <translation>(.TIF) TIFF-Format, unkomprimiert </translation>
    </message>
    <message>
        <source>(.TIF) TIFF Format - JPEG Compression</source>
        <translation>(.TIF) TIFF-Format - JPEG-Kompression</translation>
    </message>
    <message>
        <source>(.WBMP) WAP WBMP </source>
        <translation>(.WBMP) WAP WBMP </translation>
    </message>
    <message>
        <source>(.XBM) XBM Format </source>
        <translation>(.XBM) XBM-Format </translation>
    </message>
    <message>
        <source>(.XPM) XPM Format </source>
        <translation>(.XPM) XPM-Format </translation>
    </message>
    <message>
        <source>(.XWD) XWD Format </source>
        <translation>(.XWD) XWD-Format </translation>
    </message>
    <message>
        <source>Bitmap Files (*.BMP)|*.BMP|</source>
        <translation>Bitmap-Dateien (*.BMP)|*.BMP|</translation>
    </message>
    <message>
        <source>Bitmap Files 256 Colors (*.BMP)|*.BMP|</source>
        <translation>Bitmap-Dateien, 256 Farben (*.BMP)|*.BMP|</translation>
    </message>
    <message>
        <source>Bitmap Files 16 Colors (*.BMP)|*.BMP|</source>
        <translation>Bitmap-Dateien, 16 Farben (*.BMP)|*.BMP|</translation>
    </message>
    <message>
        <source>JPEG Format (*.JPG)|*.JPG|</source>
        <translation>JPEG-Format (*.JPG)|*.JPG|</translation>
    </message>
    <message>
        <source>JPEG 2000 Format (*.JP2)|*.JP2|</source>
        <translation>JPEG-2000-Format (*.JP2)|*.JP2|</translation>
    </message>
    <message>
        <source>DCX Format (*.DCX)|*.DCX|</source>
        <translation>DCX-Format (*.DCX)|*.DCX|</translation>
    </message>
    <message>
        <source>Commodore-Amiga IFF Format (*.IFF)|*.IFF|</source>
        <translation>Commodore-Amiga-IFF-Format (*.IFF)|*.IFF|</translation>
    </message>
    <message>
        <source>Psion MultiBitMap Compressed Format (*.MBM)|*.MBM|</source>
        <translation>Psion MultiBitMap, komprimiert (*.MBM)|*.MBM|</translation>
    </message>
    <message>
        <source>Psion MultiBitMap UnCompressed Format (*.MBM)|*.MBM|</source>
        <translation>Psion MultiBitMap, unkomprimiert (*.MBM)|*.MBM|</translation>
    </message>
    <message>
        <source>PBM Format (*.PBM)|*.PBM|</source>
        <translation>PBM-Format (*.PBM)|*.PBM|</translation>
    </message>
    <message>
        <source>PCX Format (*.PCX)|*.PCX|</source>
        <translation>PCX-Format (*.PCX)|*.PCX|</translation>
    </message>
    <message>
        <source>PGM Format (*.PGM)|*.PGM|</source>
        <translation>PGM-Format (*.PGM)|*.PGM|</translation>
    </message>
    <message>
        <source>PNG Format (*.PNG)|*.PNG|</source>
        <translation>PNG-Format (*.PNG)|*.PNG|</translation>
    </message>
    <message>
        <source>PPM Format (*.PPM)|*.PPM|</source>
        <translation>PPM-Format (*.PPM)|*.PPM|</translation>
    </message>
    <message>
        <source>Adobe Photoshop (*.PSD)|*.PSD|</source>
        <translation>Adobe Photoshop (*.PSD)|*.PSD|</translation>
    </message>
    <message>
        <source>SGI Format (*.RGB)|*.RGB|</source>
        <translation>SGI-Format (*.RGB)|*.RGB|</translation>
    </message>
    <message>
        <source>TGA UnCompressed Format (*.TGA)|*.TGA|</source>
        <translation>TGA-Format, unkomprimiert (*.TGA)|*.TGA|</translation>
    </message>
    <message>
        <source>TIFF UnCompressed Format (*.TIF)|*.TIF|</source>
        <translation>TIFF-Format, unkomprimiert (*.TIF)|*.TIF|</translation>
    </message>
    <message>
        <source>WAP WBMP (*.WBMP)|*.WBMP|</source>
        <translation>WAP WBMP (*.WBMP)|*.WBMP|</translation>
    </message>
    <message>
        <source>XBM Format (*.XBM)|*.XBM|</source>
        <translation>XBM-Format (*.XBM)|*.XBM|</translation>
    </message>
    <message>
        <source>XPM Format (*.XMP)|*.XPM|</source>
        <translation>XPM-Format (*.XPM)|*.XPM|</translation>
    </message>
    <message>
        <source>XWD Format (*.XWD)|*.XWD|</source>
        <translation>XWD-Format (*.XWD)|*.XWD|</translation>
    </message>
</context>
<context>
    <name>ScreenAwake</name>
    <message>
        <source>Showing media</source>
        <translation>Zeigt Medien</translation>
    </message>
</context>
<context>
    <name>StatusText</name>
    <message>
        <source> - not available</source>
        <translation> - nicht verfügbar</translation>
    </message>
</context>
<context>
    <name>ThumbnailCache</name>
    <message>
        <source>Delete Thumbnail cache:</source>
        <translation>Zwischenspeicher löschen:</translation>
    </message>
    <message>
        <source>Are you sure you want to delete the thumbnail cache?</source>
        <translation>Möchten Sie den Zwischenspeicher der Miniaturansichten wirklich löschen?</translation>
    </message>
    <message>
        <source>Thumbnail Cache:</source>
        <translation>Zwischenspeicher der Miniaturansichten:</translation>
    </message>
    <message>
        <source>Thumbnail Cache Cleared.</source>
        <translation>Der Zwischenspeicher der Miniaturansichten wurde geleert.</translation>
    </message>
    <message>
        <source>Error Clearing ThumbnailCache:</source>
        <translation>Fehler beim Leeren des Zwischenspeichers:</translation>
    </message>
    <message>
        <source>Tessaly was unable to clear the thumbnail cache.  This may be caused by an inability to have exclusive access to the cache Database.  Please close any session of Microsoft Access that may be currently open and viewing the cache database.  Then try and clear the thumbnail cache again.  If this does not correct the problem please contact Tessaly Support at: </source>
        <translation>Tessaly konnte den Zwischenspeicher der Miniaturansichten nicht leeren.  Möglicherweise ist kein alleiniger Zugriff auf dessen Datenbank zu erhalten.  Bitte schließen Sie jede Sitzung von Microsoft Access, in der diese Datenbank geöffnet ist.  Leeren Sie dann den Zwischenspeicher noch einmal.  Hilft auch das nicht, so wenden Sie sich bitte an den Support von Tessaly: </translation>
    </message>
    <message>
        <source>Compacting Thumbnail Database</source>
        <translation>Datenbank der Miniaturansichten wird verdichtet</translation>
    </message>
    <message>
        <source>this may take several seconds.</source>
        <translation>dies kann einige Sekunden dauern.</translation>
    </message>
    <message>
        <source>this may take several minutes.</source>
        <translation>dies kann einige Minuten dauern.</translation>
    </message>
</context>
<context>
    <name>Trash</name>
    <message>
        <source>&quot;%1&quot; was not moved to the trash.</source>
        <translation>„%1“ wurde nicht in den Papierkorb verschoben.</translation>
    </message>
    <message>
        <source>There is no trash on its disk.</source>
        <translation>Auf dem Datenträger gibt es keinen Papierkorb.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was not brought back.</source>
        <translation>„%1“ wurde nicht zurückgeholt.</translation>
    </message>
    <message>
        <source>There is another file of that name now.</source>
        <translation>Inzwischen gibt es eine andere Datei dieses Namens.</translation>
    </message>
</context>
<context>
    <name>VersionCheck</name>
    <message>
        <source>Update Version Check:</source>
        <translation>Suche nach neuer Version:</translation>
    </message>
    <message>
        <source>The server has no information on versions (answer %1).</source>
        <translation>Der Server hat keine Angaben zu Versionen (Antwort %1).</translation>
    </message>
    <message>
        <source>The server answered with something else than a version (%1).</source>
        <translation>Der Server antwortete mit etwas anderem als einer Version (%1).</translation>
    </message>
    <message>
        <source>You are currently running the latest version of Tessaly Lumora.</source>
        <translation>Sie verwenden die neueste Version von Tessaly Lumora.</translation>
    </message>
    <message>
        <source>A newer version of Tessaly Lumora is available for download.</source>
        <translation>Eine neuere Version von Tessaly Lumora steht zum Herunterladen bereit.</translation>
    </message>
    <message>
        <source>You have a newer build than is currently available for download of Tessaly Lumora.</source>
        <translation>Sie haben eine neuere Version von Tessaly Lumora, als derzeit zum Herunterladen bereitsteht.</translation>
    </message>
    <message>
        <source>This build of Tessaly Lumora V3 has no update server to ask. New versions come the way that this one came, for instance with the package manager of your system.</source>
        <translation>Diese Ausgabe von Tessaly Lumora V3 hat keinen Server, den sie nach neuen Versionen fragen könnte. Neue Versionen kommen auf dem Weg, auf dem diese kam, zum Beispiel über die Paketverwaltung Ihres Systems.</translation>
    </message>
    <message>
        <source>You are running version %1.</source>
        <translation>Sie verwenden die Version %1.</translation>
    </message>
    <message>
        <source>It could not be found out whether there is a newer version of Tessaly Lumora.</source>
        <translation>Es war nicht herauszufinden, ob es eine neuere Version von Tessaly Lumora gibt.</translation>
    </message>
    <message>
        <source>Nothing on this system opens the address of the download:</source>
        <translation>Nichts auf diesem System öffnet die Adresse zum Herunterladen:</translation>
    </message>
</context>
<context>
    <name>frmBrowseFolder</name>
    <message>
        <source>Tessaly Lumora - Folder Browser </source>
        <translation>Tessaly Lumora - Ordneransicht </translation>
    </message>
</context>
<context>
    <name>frmConvertFileName</name>
    <message>
        <source>Converting File(s):</source>
        <translation>Dateien werden umgewandelt:</translation>
    </message>
    <message>
        <source>From:</source>
        <translation>Von:</translation>
    </message>
    <message>
        <source>To:</source>
        <translation>Nach:</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Nach</translation>
    </message>
    <message>
        <source>Percent done</source>
        <translation>Prozent fertig</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Converting File:</source>
        <translation>Datei wird umgewandelt:</translation>
    </message>
    <message>
        <source>Coping File(s):</source>
        <translation>Dateien werden kopiert:</translation>
    </message>
    <message>
        <source>Deleting File(s):</source>
        <translation>Dateien werden gelöscht:</translation>
    </message>
</context>
<context>
    <name>frmConvertFileType</name>
    <message>
        <source>Tessaly Lumora V3 - Convert Files</source>
        <translation>Tessaly Lumora V3 - Dateien umwandeln</translation>
    </message>
    <message>
        <source>Place Images in Original Image Folder</source>
        <translation>Bilder im Ordner des Originals ablegen</translation>
    </message>
    <message>
        <source>Add Convert Folder</source>
        <translation>Ordner „Convert“ hinzufügen</translation>
    </message>
    <message>
        <source>For Each File Type</source>
        <translation>Für jeden Dateityp</translation>
    </message>
    <message>
        <source>Overwrite Existing Files</source>
        <translation>Vorhandene Dateien überschreiben</translation>
    </message>
    <message>
        <source>Prompt for Confirmation</source>
        <translation>Vorher nachfragen</translation>
    </message>
    <message>
        <source>Diffuse Image During Color Reduction</source>
        <translation>Fehler beim Verringern der Farben streuen</translation>
    </message>
    <message>
        <source>Convert to Grayscale</source>
        <translation>In Graustufen umwandeln</translation>
    </message>
    <message>
        <source>Convert To 256 Color Image</source>
        <translation>In ein Bild mit 256 Farben umwandeln</translation>
    </message>
    <message>
        <source>Auto Level Image</source>
        <translation>Tonwerte automatisch anpassen</translation>
    </message>
    <message>
        <source>Auto Contrast Image</source>
        <translation>Kontrast automatisch anpassen</translation>
    </message>
    <message>
        <source>Emboss Image</source>
        <translation>Relief anwenden</translation>
    </message>
    <message>
        <source>&amp;Selected Files Only</source>
        <translation>Nur au&amp;sgewählte Dateien</translation>
    </message>
    <message>
        <source>A&amp;ll Files In Display List</source>
        <translation>Alle &amp;Dateien der Anzeigeliste</translation>
    </message>
    <message>
        <source>S&amp;elect All</source>
        <translation>Alle aus&amp;wählen</translation>
    </message>
    <message>
        <source>C&amp;lear All</source>
        <translation>Alle a&amp;bwählen</translation>
    </message>
    <message>
        <source>I&amp;nvert</source>
        <translation>Um&amp;kehren</translation>
    </message>
    <message>
        <source>&amp;Browse</source>
        <translation>D&amp;urchsuchen</translation>
    </message>
    <message>
        <source>Con&amp;vert</source>
        <translation>Umwa&amp;ndeln</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Image folder</source>
        <translation>Bildordner</translation>
    </message>
    <message>
        <source>&amp;Please select a file type(s) to convert images to:</source>
        <translation>Bitte wählen Sie die &amp;Zieldateitypen der Umwandlung:</translation>
    </message>
    <message>
        <source>&amp;Options:</source>
        <translation>&amp;Optionen:</translation>
    </message>
    <message>
        <source>&amp;Image Folders:</source>
        <translation>B&amp;ildordner:</translation>
    </message>
    <message>
        <source>Con&amp;vert Folders:</source>
        <translation>U&amp;mwandlungsordner:</translation>
    </message>
</context>
<context>
    <name>frmDataBase</name>
    <message>
        <source>DB Demo</source>
        <translation>DB-Demo</translation>
    </message>
</context>
<context>
    <name>frmDatabaseStats</name>
    <message>
        <source>Tessaly Lumora - Database Stats</source>
        <translation>Tessaly Lumora - Statistik der Datenbank</translation>
    </message>
    <message>
        <source>Thumbnail Database Statistics:</source>
        <translation>Statistik der Datenbank der Miniaturansichten:</translation>
    </message>
    <message>
        <source>Database File Size:</source>
        <translation>Größe der Datenbankdatei:</translation>
    </message>
    <message>
        <source>Total Thumnails:</source>
        <translation>Miniaturansichten insgesamt:</translation>
    </message>
    <message>
        <source>Number of Thumbails:</source>
        <translation>Anzahl der Miniaturansichten:</translation>
    </message>
    <message>
        <source>&amp;Compact Database</source>
        <translation>Datenbank &amp;verdichten</translation>
    </message>
    <message>
        <source>Gives the room of deleted thumbnails back to the disk.</source>
        <translation>Gibt den Platz gelöschter Miniaturansichten wieder frei.</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>No. of Items:</source>
        <translation>Anzahl:</translation>
    </message>
    <message>
        <source>Thumbnails of size %1</source>
        <translation>Miniaturansichten der Größe %1</translation>
    </message>
</context>
<context>
    <name>frmGradient</name>
    <message>
        <source>Tessaly Lumora - Gradient</source>
        <translation>Tessaly Lumora - Farbverlauf</translation>
    </message>
    <message>
        <source>Start color</source>
        <translation>Anfangsfarbe</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>End color</source>
        <translation>Endfarbe</translation>
    </message>
</context>
<context>
    <name>frmIntroSelect</name>
    <message>
        <source>S&amp;elect (Browse for) Media Folder</source>
        <translation>&amp;Medienordner auswählen (durchsuchen)</translation>
    </message>
    <message>
        <source>O&amp;pen Lumora Standard Media List</source>
        <translation>&amp;Standard-Medienliste von Lumora öffnen</translation>
    </message>
    <message>
        <source>Open Lumora &amp;User Media List</source>
        <translation>&amp;Eigene Medienliste von Lumora öffnen</translation>
    </message>
    <message>
        <source>&amp;Display Pixelon / Zoom Viewer</source>
        <translation>&amp;Pixelon / Zoomansicht anzeigen</translation>
    </message>
    <message>
        <source>D&amp;isplay Folder Browser Viewer</source>
        <translation>&amp;Ordneransicht anzeigen</translation>
    </message>
    <message>
        <source>Select Viewer:</source>
        <translation>Ansicht auswählen:</translation>
    </message>
    <message>
        <source>C&amp;hoose what you want to do</source>
        <translation>&amp;Wählen Sie, was Sie tun möchten</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>&amp;Auswählen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Sh&amp;ow at startup</source>
        <translation>&amp;Beim Start anzeigen</translation>
    </message>
    <message>
        <source>&quot;Select Viewer&quot; of the File menu brings this window back.</source>
        <translation>„Ansicht auswählen“ im Menü „Datei“ holt dieses Fenster zurück.</translation>
    </message>
</context>
<context>
    <name>frmListManagement</name>
    <message>
        <source>Tessaly Lumora - Advanced List Management</source>
        <translation>Tessaly Lumora - Erweiterte Listenverwaltung</translation>
    </message>
    <message>
        <source>File type selections affect all options with regards to FIND and SELECT ACTIONS.</source>
        <translation>Die Auswahl der Dateitypen gilt für alle Optionen von SUCHEN und AUSWÄHLEN.</translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Find What:</source>
        <translation>Suchen nach:</translation>
    </message>
    <message>
        <source>Find What</source>
        <translation>Suchen nach</translation>
    </message>
    <message>
        <source>Type text to look for as part of a file name.</source>
        <translation>Geben Sie einen Text ein, der als Teil eines Dateinamens gesucht wird.</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>Selects the entries that hold the text.</source>
        <translation>Wählt die Einträge aus, die den Text enthalten.</translation>
    </message>
    <message>
        <source>&amp;Select Items In List</source>
        <translation>Einträge aus&amp;wählen</translation>
    </message>
    <message>
        <source>Selects the entries of the checked file types.</source>
        <translation>Wählt die Einträge der angekreuzten Dateitypen aus.</translation>
    </message>
    <message>
        <source>&amp;Clear Items In List</source>
        <translation>Einträge a&amp;bwählen</translation>
    </message>
    <message>
        <source>Takes the selection off the entries of the checked file types.</source>
        <translation>Hebt die Auswahl der Einträge der angekreuzten Dateitypen auf.</translation>
    </message>
    <message>
        <source>I&amp;nvert Selections</source>
        <translation>Auswahl um&amp;kehren</translation>
    </message>
    <message>
        <source>Reverses the selection of the entries of the checked file types.</source>
        <translation>Kehrt die Auswahl der Einträge der angekreuzten Dateitypen um.</translation>
    </message>
    <message>
        <source>&amp;Remove Selections</source>
        <translation>Ausgewählte ent&amp;fernen</translation>
    </message>
    <message>
        <source>Takes the selected entries out of the list. The files themselves are not touched.</source>
        <translation>Nimmt die ausgewählten Einträge aus der Liste. Die Dateien selbst bleiben unberührt.</translation>
    </message>
    <message>
        <source>Selection List</source>
        <translation>Auswahlliste</translation>
    </message>
    <message>
        <source>Display List</source>
        <translation>Anzeigeliste</translation>
    </message>
    <message>
        <source>Changes Apply To</source>
        <translation>Änderungen gelten für</translation>
    </message>
    <message>
        <source>Select All &amp;Types</source>
        <translation>Alle &amp;Typen auswählen</translation>
    </message>
    <message>
        <source>Cle&amp;ar All Types</source>
        <translation>&amp;Alle Typen abwählen</translation>
    </message>
    <message>
        <source>In&amp;vert Selections</source>
        <translation>Auswa&amp;hl umkehren</translation>
    </message>
    <message>
        <source>File Types</source>
        <translation>Dateitypen</translation>
    </message>
    <message>
        <source>Invert Selections of Types</source>
        <translation>Auswahl der Typen umkehren</translation>
    </message>
</context>
<context>
    <name>frmMainViewer</name>
    <message>
        <source>Tessaly Lumora - Select Copy To...Directory</source>
        <translation>Tessaly Lumora - Zielordner zum Kopieren wählen</translation>
    </message>
    <message>
        <source>Tessaly Lumora - Select Move To...Directory</source>
        <translation>Tessaly Lumora - Zielordner zum Verschieben wählen</translation>
    </message>
    <message>
        <source>Save Image As</source>
        <translation>Bild speichern unter</translation>
    </message>
    <message>
        <source>Image Save As Error</source>
        <translation>Fehler beim Speichern des Bilds</translation>
    </message>
    <message>
        <source>There was an error while saving the image!!</source>
        <translation>Beim Speichern des Bilds ist ein Fehler aufgetreten!!</translation>
    </message>
    <message>
        <source>Save Thumbnail Of Current Image</source>
        <translation>Miniaturansicht des aktuellen Bilds speichern</translation>
    </message>
    <message>
        <source>Bitmap Files (*.BMP)|*.BMP</source>
        <translation>Bitmap-Dateien (*.BMP)|*.BMP</translation>
    </message>
    <message>
        <source>... and %1 more.</source>
        <translation>... und %1 weitere.</translation>
    </message>
    <message>
        <source>Move to Trash</source>
        <translation>In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>Undo Move to Trash</source>
        <translation>Verschieben in den Papierkorb rückgängig machen</translation>
    </message>
    <message>
        <source>Rename File</source>
        <translation>Datei umbenennen</translation>
    </message>
    <message>
        <source>New name of the file:</source>
        <translation>Neuer Name der Datei:</translation>
    </message>
    <message>
        <source>Tessaly Lumora V3</source>
        <translation>Tessaly Lumora V3</translation>
    </message>
    <message>
        <source>Current Image:</source>
        <translation>Aktuelles Bild:</translation>
    </message>
    <message>
        <source>Viewer pane</source>
        <translation>Bildbereich</translation>
    </message>
    <message>
        <source>Current image</source>
        <translation>Aktuelles Bild</translation>
    </message>
    <message>
        <source>Media player</source>
        <translation>Medienwiedergabe</translation>
    </message>
    <message>
        <source>Move &amp;Up</source>
        <translation>Nach ob&amp;en</translation>
    </message>
    <message>
        <source>Move last selected image UP the list</source>
        <translation>Das zuletzt ausgewählte Bild in der Liste nach OBEN verschieben</translation>
    </message>
    <message>
        <source>Move &amp;Down</source>
        <translation>Nach &amp;unten</translation>
    </message>
    <message>
        <source>Move last selected image down the list.</source>
        <translation>Das zuletzt ausgewählte Bild in der Liste nach unten verschieben.</translation>
    </message>
    <message>
        <source>Add &amp;Selected</source>
        <translation>Ausge&amp;wählte hinzufügen</translation>
    </message>
    <message>
        <source>Add all selected file names from the Selection list to the Display List.</source>
        <translation>Alle ausgewählten Dateinamen der Auswahlliste in die Anzeigeliste aufnehmen.</translation>
    </message>
    <message>
        <source>&amp;Add All</source>
        <translation>A&amp;lle hinzufügen</translation>
    </message>
    <message>
        <source>Add all file names from the Selection list to the Display list.</source>
        <translation>Alle Dateinamen der Auswahlliste in die Anzeigeliste aufnehmen.</translation>
    </message>
    <message>
        <source>Remove Se&amp;lected</source>
        <translation>Ausgewählte ent&amp;fernen</translation>
    </message>
    <message>
        <source>Remove all selected file names from the Display list.</source>
        <translation>Alle ausgewählten Dateinamen aus der Anzeigeliste entfernen.</translation>
    </message>
    <message>
        <source>&amp;Remove All</source>
        <translation>Alle entfe&amp;rnen</translation>
    </message>
    <message>
        <source>Remove all file names from the Display list.</source>
        <translation>Alle Dateinamen aus der Anzeigeliste entfernen.</translation>
    </message>
    <message>
        <source>&amp;Clear Selection List</source>
        <translation>Au&amp;swahlliste leeren</translation>
    </message>
    <message>
        <source>Clear all files from the selection list.</source>
        <translation>Alle Dateien aus der Auswahlliste entfernen.</translation>
    </message>
    <message>
        <source>Toggle Viewer Width State</source>
        <translation>Breite der Ansicht umschalten</translation>
    </message>
    <message>
        <source>Toggle List Width State</source>
        <translation>Breite der Liste umschalten</translation>
    </message>
    <message>
        <source>Selection</source>
        <translation>Auswahl</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Anzeige</translation>
    </message>
    <message>
        <source>Selection list</source>
        <translation>Auswahlliste</translation>
    </message>
    <message>
        <source>Display list</source>
        <translation>Anzeigeliste</translation>
    </message>
    <message>
        <source>Lists</source>
        <translation>Listen</translation>
    </message>
    <message>
        <source>Files in List:</source>
        <translation>Dateien in Liste:</translation>
    </message>
    <message>
        <source>Item In Use:</source>
        <translation>Aktueller Eintrag:</translation>
    </message>
    <message>
        <source>Files in list</source>
        <translation>Dateien in der Liste</translation>
    </message>
    <message>
        <source>Item in use</source>
        <translation>Aktueller Eintrag</translation>
    </message>
    <message>
        <source>Full FileName</source>
        <translation>Vollständiger Dateiname</translation>
    </message>
    <message>
        <source>Drive</source>
        <translation>Laufwerk</translation>
    </message>
    <message>
        <source>Path</source>
        <translation>Pfad</translation>
    </message>
    <message>
        <source>FileName</source>
        <translation>Dateiname</translation>
    </message>
    <message>
        <source>Tessaly Lumora V3.1</source>
        <translation>Tessaly Lumora V3.1</translation>
    </message>
    <message>
        <source>Loading Media File List
this may take a few seconds</source>
        <translation>Die Mediendateiliste wird geladen,
dies kann einige Sekunden dauern</translation>
    </message>
    <message>
        <source>Load Lumora Image List</source>
        <translation>Lumora-Bildliste laden</translation>
    </message>
    <message>
        <source>Saving Media File List</source>
        <translation>Die Mediendateiliste wird gespeichert</translation>
    </message>
    <message>
        <source>Save Lumora Image List As</source>
        <translation>Lumora-Bildliste speichern unter</translation>
    </message>
    <message>
        <source>Selected File In Folder: </source>
        <translation>Ausgewählte Datei im Ordner: </translation>
    </message>
    <message>
        <source>Full Screen Show</source>
        <translation>Vollbild-Medienschau</translation>
    </message>
    <message>
        <source>Main Viewer Show</source>
        <translation>Medienschau in der Hauptansicht</translation>
    </message>
    <message>
        <source>Slide Interval</source>
        <translation>Wechselintervall</translation>
    </message>
    <message>
        <source>Please enter slide interval in seconds (1 - 30):</source>
        <translation>Bitte geben Sie das Wechselintervall in Sekunden ein (1 - 30):</translation>
    </message>
    <message>
        <source>&amp;Start Full Screen Media Show</source>
        <translation>&amp;Vollbild-Medienschau starten</translation>
    </message>
    <message>
        <source>S&amp;top Media Show</source>
        <translation>Medien&amp;schau beenden</translation>
    </message>
    <message>
        <source>S&amp;tart Media Show</source>
        <translation>Medien&amp;schau starten</translation>
    </message>
    <message>
        <source>&amp;Stop Full Screen Media Show</source>
        <translation>&amp;Vollbild-Medienschau beenden</translation>
    </message>
    <message>
        <source>Volume Controls</source>
        <translation>Lautstärkeregler</translation>
    </message>
    <message>
        <source>No program for the volume controls of this desktop is installed. The package pavucontrol holds one that works on every desktop.</source>
        <translation>Für die Lautstärkeregler dieses Desktops ist kein Programm installiert. Das Paket pavucontrol enthält eines, das auf jedem Desktop läuft.</translation>
    </message>
    <message>
        <source>Search Status:</source>
        <translation>Stand der Suche:</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Select (Browse for) Media &amp;Folder</source>
        <translation>Medien&amp;ordner auswählen (durchsuchen)</translation>
    </message>
    <message>
        <source>-Open Standard Media &amp;List</source>
        <translation>-Standard-Medien&amp;liste öffnen</translation>
    </message>
    <message>
        <source>&amp;Open User Media List</source>
        <translation>&amp;Eigene Medienliste öffnen</translation>
    </message>
    <message>
        <source>&amp;Save Standard Media List</source>
        <translation>&amp;Standard-Medienliste speichern</translation>
    </message>
    <message>
        <source>Save &amp;User Media List As</source>
        <translation>E&amp;igene Medienliste speichern unter</translation>
    </message>
    <message>
        <source>&amp;Zap Display Media List</source>
        <translation>&amp;Anzeigeliste leeren</translation>
    </message>
    <message>
        <source>-Save &amp;Image As</source>
        <translation>-&amp;Bild speichern unter</translation>
    </message>
    <message>
        <source>Save &amp;Thumbnail of Current Image</source>
        <translation>&amp;Miniaturansicht des aktuellen Bilds speichern</translation>
    </message>
    <message>
        <source>&amp;Batch Convert Images</source>
        <translation>Bilder stapelweise &amp;umwandeln</translation>
    </message>
    <message>
        <source>&amp;E-mail Image as attachment</source>
        <translation>Bild als E-Mail-An&amp;hang senden</translation>
    </message>
    <message>
        <source>-&amp;Print Image</source>
        <translation>-Bild &amp;drucken</translation>
    </message>
    <message>
        <source>P&amp;rinter Setup</source>
        <translation>Druc&amp;ker einrichten</translation>
    </message>
    <message>
        <source>-File Propert&amp;ies</source>
        <translation>-Dateiei&amp;genschaften</translation>
    </message>
    <message>
        <source>-S&amp;elect Viewer</source>
        <translation>-Ansicht aus&amp;wählen</translation>
    </message>
    <message>
        <source>-E&amp;xit</source>
        <translation>-Bee&amp;nden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Copy Image to ClipBoard</source>
        <translation>Bild in die Zwischenablage &amp;kopieren</translation>
    </message>
    <message>
        <source>C&amp;opy Media Name Link to ClipBoard</source>
        <translation>V&amp;erweis auf die Mediendatei in die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>-Copy &amp;Files To</source>
        <translation>-&amp;Dateien kopieren nach</translation>
    </message>
    <message>
        <source>&amp;Move Files To</source>
        <translation>Dateien &amp;verschieben nach</translation>
    </message>
    <message>
        <source>&amp;Delete Files</source>
        <translation>Dateien &amp;löschen</translation>
    </message>
    <message>
        <source>Move Selected Files to &amp;Trash</source>
        <translation>&amp;Ausgewählte Dateien in den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>&amp;Undo Move to Trash</source>
        <translation>Verschieben in den Papierkorb &amp;rückgängig machen</translation>
    </message>
    <message>
        <source>&amp;Rename File</source>
        <translation>Datei &amp;umbenennen</translation>
    </message>
    <message>
        <source>-&amp;Zoom</source>
        <translation>-&amp;Zoom</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>Ver&amp;größern</translation>
    </message>
    <message>
        <source>Zoom Ou&amp;t</source>
        <translation>Verklei&amp;nern</translation>
    </message>
    <message>
        <source>&amp;Picture</source>
        <translation>B&amp;ild</translation>
    </message>
    <message>
        <source>View &amp;Next Media File</source>
        <translation>&amp;Nächste Mediendatei anzeigen</translation>
    </message>
    <message>
        <source>View Pre&amp;vious Media File</source>
        <translation>&amp;Vorherige Mediendatei anzeigen</translation>
    </message>
    <message>
        <source>-Add &amp;Selected</source>
        <translation>-Ausge&amp;wählte hinzufügen</translation>
    </message>
    <message>
        <source>Advanced List &amp;Management</source>
        <translation>Erwei&amp;terte Listenverwaltung</translation>
    </message>
    <message>
        <source>-Display &amp;Pixelon / Zoom Viewer</source>
        <translation>-&amp;Pixelon / Zoomansicht anzeigen</translation>
    </message>
    <message>
        <source>Display Folder &amp;Browser Viewer</source>
        <translation>&amp;Ordneransicht anzeigen</translation>
    </message>
    <message>
        <source>Display &amp;Thumbnail Viewer</source>
        <translation>&amp;Miniaturübersicht anzeigen</translation>
    </message>
    <message>
        <source>&amp;Information Summary</source>
        <translation>&amp;Informationsübersicht</translation>
    </message>
    <message>
        <source>-Set Image as &amp;Desktop Wallpaper</source>
        <translation>-Bild als Bildschirm&amp;hintergrund</translation>
    </message>
    <message>
        <source>&amp;Centered</source>
        <translation>&amp;Zentriert</translation>
    </message>
    <message>
        <source>&amp;Stretched</source>
        <translation>&amp;Gestreckt</translation>
    </message>
    <message>
        <source>&amp;Tiled</source>
        <translation>Ge&amp;kachelt</translation>
    </message>
    <message>
        <source>&amp;Remove Wallpaper</source>
        <translation>Bildschirmhintergrund &amp;entfernen</translation>
    </message>
    <message>
        <source>-R&amp;estore Wallpaper of Before</source>
        <translation>-&amp;Vorherigen Bildschirmhintergrund wiederherstellen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Full Width Media &amp;Player / Image</source>
        <translation>&amp;Wiedergabe / Bild in voller Breite</translation>
    </message>
    <message>
        <source>Full Width Media Name &amp;List</source>
        <translation>&amp;Liste der Mediennamen in voller Breite</translation>
    </message>
    <message>
        <source>-Display In &amp;Full Screen Viewer</source>
        <translation>-In der &amp;Vollbildansicht anzeigen</translation>
    </message>
    <message>
        <source>-&amp;Toolbars</source>
        <translation>-&amp;Symbolleisten</translation>
    </message>
    <message>
        <source>&amp;Main Toolbar</source>
        <translation>&amp;Hauptsymbolleiste</translation>
    </message>
    <message>
        <source>&amp;Show Captions</source>
        <translation>&amp;Beschriftungen anzeigen</translation>
    </message>
    <message>
        <source>Captions at &amp;Bottom</source>
        <translation>Beschriftungen &amp;unten</translation>
    </message>
    <message>
        <source>Captions at &amp;Right</source>
        <translation>Beschriftungen &amp;rechts</translation>
    </message>
    <message>
        <source>&amp;Media Show</source>
        <translation>&amp;Medienschau</translation>
    </message>
    <message>
        <source>Display Full Screen Media Viewer</source>
        <translation>Vollbildansicht anzeigen</translation>
    </message>
    <message>
        <source>S&amp;tart/Stop Media Show</source>
        <translation>Medien&amp;schau starten/beenden</translation>
    </message>
    <message>
        <source>-&amp;Main Viewer Only</source>
        <translation>-Nur &amp;Hauptansicht</translation>
    </message>
    <message>
        <source>     + Desktop &amp;Centered</source>
        <translation>     + Bildschirm &amp;zentriert</translation>
    </message>
    <message>
        <source>     + Desktop &amp;Stretched</source>
        <translation>     + Bildschirm &amp;gestreckt</translation>
    </message>
    <message>
        <source>-&amp;Forward Order</source>
        <translation>-Vor&amp;wärts</translation>
    </message>
    <message>
        <source>&amp;Reverse Order</source>
        <translation>&amp;Rückwärts</translation>
    </message>
    <message>
        <source>Sh&amp;uffle Mode</source>
        <translation>Z&amp;ufallsmodus</translation>
    </message>
    <message>
        <source>-&amp;Loop Around Mode</source>
        <translation>-&amp;Endlosmodus</translation>
    </message>
    <message>
        <source>Next Shuffle Media File</source>
        <translation>Nächste zufällige Mediendatei</translation>
    </message>
    <message>
        <source>Reset Shuffle Media History List</source>
        <translation>Zufallsverlauf zurücksetzen</translation>
    </message>
    <message>
        <source>-Toolbar &amp;Button Starts</source>
        <translation>-Schaltfläche der Sym&amp;bolleiste startet</translation>
    </message>
    <message>
        <source>Media Change Time &amp;Interval</source>
        <translation>Wechsel&amp;intervall</translation>
    </message>
    <message>
        <source>&amp;Options</source>
        <translation>&amp;Optionen</translation>
    </message>
    <message>
        <source>&amp;Preferences</source>
        <translation>&amp;Einstellungen</translation>
    </message>
    <message>
        <source>&amp;Minimize to System Tray</source>
        <translation>In den Infobereich &amp;minimieren</translation>
    </message>
    <message>
        <source>&amp;Display Options</source>
        <translation>&amp;Anzeigeoptionen</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>E&amp;xtras</translation>
    </message>
    <message>
        <source>&amp;Volume Controls</source>
        <translation>&amp;Lautstärkeregler</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Check for &amp;New Version</source>
        <translation>Nach &amp;neuer Version suchen</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Info</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Select (Browse For) Media Folder</source>
        <translation>Medienordner auswählen (durchsuchen)</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Load Media File List</source>
        <translation>Mediendateiliste laden</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Save Media File List</source>
        <translation>Mediendateiliste speichern</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Exit Lumora</source>
        <translation>Lumora beenden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy Current Image To The Clipboard</source>
        <translation>Aktuelles Bild in die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>Set Current Image as Centered Wallpaper</source>
        <translation>Aktuelles Bild zentriert als Bildschirmhintergrund</translation>
    </message>
    <message>
        <source>Set Current Image as StretchedWallpaper</source>
        <translation>Aktuelles Bild gestreckt als Bildschirmhintergrund</translation>
    </message>
    <message>
        <source>Set Current Image as Tiled Wallpaper</source>
        <translation>Aktuelles Bild gekachelt als Bildschirmhintergrund</translation>
    </message>
    <message>
        <source>Removes Current Wallpaper</source>
        <translation>Entfernt den Bildschirmhintergrund</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Move To Previous Media File</source>
        <translation>Zur vorherigen Mediendatei</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Move To Next Media File</source>
        <translation>Zur nächsten Mediendatei</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Display Color Balance Options</source>
        <translation>Optionen der Farbbalance anzeigen</translation>
    </message>
    <message>
        <source>Display Contrast/Brightness Options</source>
        <translation>Optionen für Kontrast/Helligkeit anzeigen</translation>
    </message>
    <message>
        <source>Rotate Image Right 90 degrees</source>
        <translation>Bild um 90 Grad nach rechts drehen</translation>
    </message>
    <message>
        <source>Zoom -</source>
        <translation>Zoom -</translation>
    </message>
    <message>
        <source>Decrease Zoom Level</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Zoom +</source>
        <translation>Zoom +</translation>
    </message>
    <message>
        <source>Increase Zoom Level</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>Display Program Properties </source>
        <translation>Einstellungen des Programms anzeigen </translation>
    </message>
    <message>
        <source>Editor</source>
        <translation>Editor</translation>
    </message>
    <message>
        <source>Display Image in Full Screen Viewer /  Pixelon</source>
        <translation>Bild in der Zoomansicht / Pixelon anzeigen</translation>
    </message>
    <message>
        <source>Thumbs</source>
        <translation>Übersicht</translation>
    </message>
    <message>
        <source>Display Thumbnail Viewer</source>
        <translation>Miniaturübersicht anzeigen</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Schau</translation>
    </message>
    <message>
        <source>Display Media Show in Full Screen Viewer</source>
        <translation>Medienschau in der Vollbildansicht zeigen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Display Lumora About Information</source>
        <translation>Informationen über Lumora anzeigen</translation>
    </message>
</context>
<context>
    <name>frmMakeThumbNails</name>
    <message>
        <source>Making Thumbnails</source>
        <translation>Miniaturansichten werden erzeugt</translation>
    </message>
    <message>
        <source>&amp;Click Window to cancel processing.</source>
        <translation>&amp;Klicken Sie zum Abbrechen in das Fenster.</translation>
    </message>
    <message>
        <source>Making Thumbnail:</source>
        <translation>Miniaturansicht wird erzeugt:</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>Thumbnails per minute</source>
        <translation>Miniaturansichten je Minute</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Miniaturansichten</translation>
    </message>
    <message>
        <source>per / min</source>
        <translation>je Minute</translation>
    </message>
    <message>
        <source>&amp;Show Thumbnail</source>
        <translation>&amp;Miniaturansicht zeigen</translation>
    </message>
    <message>
        <source>Show Thumbnail</source>
        <translation>Miniaturansicht zeigen</translation>
    </message>
    <message>
        <source>Picture in work</source>
        <translation>Bild in Arbeit</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Scanning</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Est. Time Remaining: %1</source>
        <translation>Verbleibende Zeit etwa: %1</translation>
    </message>
    <message>
        <source>Current Size: %1</source>
        <translation>Aktuelle Größe: %1</translation>
    </message>
    <message>
        <source>Delete Thumbnail cache:</source>
        <translation>Zwischenspeicher löschen:</translation>
    </message>
    <message>
        <source>Are you sure you want to cancel thumbnail generating all thumbnails?</source>
        <translation>Möchten Sie das Erzeugen aller Miniaturansichten wirklich abbrechen?</translation>
    </message>
</context>
<context>
    <name>frmMessage</name>
    <message>
        <source>Tessaly Lumora V3</source>
        <translation>Tessaly Lumora V3</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
</context>
<context>
    <name>frmPreferences</name>
    <message>
        <source>Tessaly Lumora - Preferences</source>
        <translation>Tessaly Lumora - Einstellungen</translation>
    </message>
    <message>
        <source>Default Open Folder:</source>
        <translation>Standardordner zum Öffnen:</translation>
    </message>
    <message>
        <source>Size = %1</source>
        <translation>Größe = %1</translation>
    </message>
    <message>
        <source>Thumbnail Options</source>
        <translation>Miniaturansichten</translation>
    </message>
    <message>
        <source>Quality / Size Options</source>
        <translation>Qualität / Größe</translation>
    </message>
    <message>
        <source>Select File Types</source>
        <translation>Dateitypen auswählen</translation>
    </message>
    <message>
        <source>Associate File Types</source>
        <translation>Dateitypen zuordnen</translation>
    </message>
    <message>
        <source>Information Summary</source>
        <translation>Informationsübersicht</translation>
    </message>
    <message>
        <source>Default Folder Options</source>
        <translation>Standardordner</translation>
    </message>
    <message>
        <source>Groups of options</source>
        <translation>Gruppen von Optionen</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message>
        <source>Thumbnail Size</source>
        <translation>Größe der Miniaturansichten</translation>
    </message>
    <message>
        <source>Draws a raised frame around each thumbnail</source>
        <translation>Zeichnet einen erhabenen Rahmen um jede Miniaturansicht</translation>
    </message>
    <message>
        <source>&amp;Background Color...</source>
        <translation>&amp;Hintergrundfarbe...</translation>
    </message>
    <message>
        <source>Sample</source>
        <translation>Beispiel</translation>
    </message>
    <message>
        <source>Sample thumbnail of the current picture</source>
        <translation>Miniaturansicht des aktuellen Bilds als Beispiel</translation>
    </message>
    <message>
        <source>Thumbnail Compression</source>
        <translation>Kompression der Miniaturansichten</translation>
    </message>
    <message>
        <source>Uncompressed</source>
        <translation>Unkomprimiert</translation>
    </message>
    <message>
        <source>Standard Compression</source>
        <translation>Normale Kompression</translation>
    </message>
    <message>
        <source>High Compression</source>
        <translation>Hohe Kompression</translation>
    </message>
    <message>
        <source>Uses Windows Bitmap Encoding</source>
        <translation>Speichert als Windows-Bitmap</translation>
    </message>
    <message>
        <source>Uses JPEG Encoding</source>
        <translation>Speichert als JPEG</translation>
    </message>
    <message>
        <source>Uses JPEG 2000 Encoding</source>
        <translation>Speichert als JPEG 2000</translation>
    </message>
    <message>
        <source>Thumbnail Cache</source>
        <translation>Zwischenspeicher der Miniaturansichten</translation>
    </message>
    <message>
        <source>Create and Cache Thumbnails in Thumbnail Viewer</source>
        <translation>In der Miniaturübersicht Miniaturansichten erzeugen und zwischenspeichern</translation>
    </message>
    <message>
        <source>Overwrite thumbnails already in cache</source>
        <translation>Miniaturansichten im Zwischenspeicher überschreiben</translation>
    </message>
    <message>
        <source>Screen Options</source>
        <translation>Bildschirm</translation>
    </message>
    <message>
        <source>Stretc&amp;h Viewer Image</source>
        <translation>Bild in der Ansicht s&amp;trecken</translation>
    </message>
    <message>
        <source>Save Quality</source>
        <translation>Qualität beim Speichern</translation>
    </message>
    <message>
        <source>&amp;JPEG Quality:</source>
        <translation>&amp;JPEG-Qualität:</translation>
    </message>
    <message>
        <source>JPEG &amp;2000 Quality:</source>
        <translation>JPEG-&amp;2000-Qualität:</translation>
    </message>
    <message>
        <source>Value Range (1-100)</source>
        <translation>Wertebereich (1-100)</translation>
    </message>
    <message>
        <source>JPEG Fast Saves</source>
        <translation>JPEG schnell speichern</translation>
    </message>
    <message>
        <source>JPEG and JPEG 2000 Save Quality settings of the save value DO NOT result in the same image quality.</source>
        <translation>Gleiche Werte für JPEG und JPEG 2000 ergeben NICHT die gleiche Bildqualität.</translation>
    </message>
    <message>
        <source>Photo CD Size</source>
        <translation>Größe der Photo CD</translation>
    </message>
    <message>
        <source>Diffuse 1bit b/w file saves:</source>
        <translation>Fehler bei S/W-Dateien mit 1 Bit streuen:</translation>
    </message>
    <message>
        <source>for (*.PBM)</source>
        <translation>für (*.PBM)</translation>
    </message>
    <message>
        <source>for (*.PGM)</source>
        <translation>für (*.PGM)</translation>
    </message>
    <message>
        <source>for (*.WBMP)</source>
        <translation>für (*.WBMP)</translation>
    </message>
    <message>
        <source>for (*.XBM)</source>
        <translation>für (*.XBM)</translation>
    </message>
    <message>
        <source>for (*.XPM)</source>
        <translation>für (*.XPM)</translation>
    </message>
    <message>
        <source>Diffuse 1bit b/w file saves results in a more even image when saving from a previously color image.</source>
        <translation>Gestreute S/W-Dateien mit 1 Bit ergeben ein gleichmäßigeres Bild, wenn das Bild vorher farbig war.</translation>
    </message>
    <message>
        <source>&amp;Microsoft Formats</source>
        <translation>&amp;Microsoft-Formate</translation>
    </message>
    <message>
        <source>&amp;Web Formats</source>
        <translation>&amp;Web-Formate</translation>
    </message>
    <message>
        <source>&amp;PortableFormats</source>
        <translation>&amp;Portable Formate</translation>
    </message>
    <message>
        <source>&amp;Digital Camera Formats</source>
        <translation>&amp;Digitalkamera-Formate</translation>
    </message>
    <message>
        <source>Select All &amp;Types</source>
        <translation>Alle &amp;Typen auswählen</translation>
    </message>
    <message>
        <source>C&amp;lear All Types</source>
        <translation>Alle Typen a&amp;bwählen</translation>
    </message>
    <message>
        <source>&amp;Invert Selections</source>
        <translation>Auswahl &amp;umkehren</translation>
    </message>
    <message>
        <source>Picture Types</source>
        <translation>Bildtypen</translation>
    </message>
    <message>
        <source>Audio and Video Types</source>
        <translation>Audio- und Videotypen</translation>
    </message>
    <message>
        <source>Select &amp;All Audio Types</source>
        <translation>Alle &amp;Audiotypen auswählen</translation>
    </message>
    <message>
        <source>&amp;Clear All Audio Types</source>
        <translation>Alle Audiot&amp;ypen abwählen</translation>
    </message>
    <message>
        <source>I&amp;nvert Audio Selections</source>
        <translation>Audioauswahl um&amp;kehren</translation>
    </message>
    <message>
        <source>Count File Types</source>
        <translation>Dateitypen zählen</translation>
    </message>
    <message>
        <source>Count File Size</source>
        <translation>Dateigrößen zählen</translation>
    </message>
    <message>
        <source>Count File Color Depth</source>
        <translation>Farbtiefen zählen</translation>
    </message>
    <message>
        <source>Enabling &apos;Count File Count Depth&apos; will slow down the scan since each file MUST be loaded to obtain the color informtion.</source>
        <translation>Mit „Farbtiefen zählen“ dauert die Suche länger, da jede Datei für die Angaben zur Farbe geladen werden MUSS.</translation>
    </message>
    <message>
        <source>Gra&amp;phic Image File Information Summary</source>
        <translation>Informationsübersicht der &amp;Grafikdateien</translation>
    </message>
    <message>
        <source>Use Last Opened Folder</source>
        <translation>Zuletzt geöffneten Ordner verwenden</translation>
    </message>
    <message>
        <source>Use This Folder</source>
        <translation>Diesen Ordner verwenden</translation>
    </message>
    <message>
        <source>Default Open Folder</source>
        <translation>Standardordner zum Öffnen</translation>
    </message>
    <message>
        <source>&amp;Browse...</source>
        <translation>&amp;Durchsuchen...</translation>
    </message>
    <message>
        <source>Further Picture Types</source>
        <translation>Weitere Bildtypen</translation>
    </message>
    <message>
        <source>With the list files of Lumora (.Lsl)</source>
        <translation>Mit den Listendateien von Lumora (.Lsl)</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Alle auswählen</translation>
    </message>
    <message>
        <source>&amp;Clear All</source>
        <translation>Alle a&amp;bwählen</translation>
    </message>
    <message>
        <source>&amp;Invert All</source>
        <translation>Alle &amp;umkehren</translation>
    </message>
    <message>
        <source>Set Associations</source>
        <translation>Zuordnungen festlegen</translation>
    </message>
    <message>
        <source>Makes Lumora V3 the program for the checked types</source>
        <translation>Macht Lumora V3 zum Programm der angekreuzten Typen</translation>
    </message>
    <message>
        <source>This folder is not there now. Until it is, dialogs begin in another one.</source>
        <translation>Diesen Ordner gibt es zurzeit nicht. Solange er fehlt, beginnen Dialoge in einem anderen.</translation>
    </message>
    <message>
        <source>Files of the checked types will open with Lumora V3 on your desktop, those of the others with the program they had before; types in bold letters do so now. Types of one kind, as .JPG and .JPEG, go together. .IMG, .GEM and .PIC stay with the programs of your system.</source>
        <translation>Dateien der angekreuzten Typen öffnet Ihr Desktop künftig mit Lumora V3, die der anderen mit dem bisherigen Programm; bei fett gedruckten Typen ist das schon jetzt so. Typen derselben Art wie .JPG und .JPEG gehören zusammen. .IMG, .GEM und .PIC bleiben bei den Programmen Ihres Systems.</translation>
    </message>
    <message>
        <source>Opens with Lumora V3 now</source>
        <translation>Wird zurzeit mit Lumora V3 geöffnet</translation>
    </message>
    <message>
        <source> Style</source>
        <translation> Stil</translation>
    </message>
    <message>
        <source>Thumbnail Style</source>
        <translation>Stil der Miniaturansichten</translation>
    </message>
</context>
<context>
    <name>frmSelectBatchDir</name>
    <message>
        <source>Tessaly Lumora - Select Batch Directory</source>
        <translation>Tessaly Lumora - Ordner auswählen</translation>
    </message>
    <message>
        <source>D&amp;rive:</source>
        <translation>&amp;Laufwerk:</translation>
    </message>
    <message>
        <source>&amp;Directory:</source>
        <translation>O&amp;rdner:</translation>
    </message>
    <message>
        <source>Selected directory:</source>
        <translation>Ausgewählter Ordner:</translation>
    </message>
    <message>
        <source>Free space</source>
        <translation>Freier Platz</translation>
    </message>
    <message>
        <source>Drive</source>
        <translation>Laufwerk</translation>
    </message>
    <message>
        <source>Directory</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Selected directory</source>
        <translation>Ausgewählter Ordner</translation>
    </message>
    <message>
        <source>Create D&amp;irectory</source>
        <translation>Ordner a&amp;nlegen</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>%1 free</source>
        <translation>%1 frei</translation>
    </message>
    <message>
        <source>Create Directory</source>
        <translation>Ordner anlegen</translation>
    </message>
    <message>
        <source>Enter Name Of Directory To Create</source>
        <translation>Geben Sie den Namen des neuen Ordners ein</translation>
    </message>
    <message>
        <source>Directory Created</source>
        <translation>Ordner angelegt</translation>
    </message>
    <message>
        <source>Directory </source>
        <translation>Der Ordner </translation>
    </message>
    <message>
        <source> created successfully.</source>
        <translation> wurde erfolgreich angelegt.</translation>
    </message>
    <message>
        <source>Directory Creation error</source>
        <translation>Fehler beim Anlegen des Ordners</translation>
    </message>
    <message>
        <source>Directory could not be created.</source>
        <translation>Der Ordner konnte nicht angelegt werden.</translation>
    </message>
</context>
<context>
    <name>frmSelectPictureDirectoryForm</name>
    <message>
        <source>%1 Pixels</source>
        <translation>%1 Pixel</translation>
    </message>
    <message>
        <source>Lumora - Select File Directory</source>
        <translation>Lumora - Dateiordner auswählen</translation>
    </message>
    <message>
        <source>Please select picture directory. File list and thumbnail are for preview only!!!</source>
        <translation>Bitte wählen Sie den Bildordner aus. Dateiliste und Miniaturansicht dienen nur der Vorschau!!!</translation>
    </message>
    <message>
        <source>D&amp;esktop</source>
        <translation>&amp;Schreibtisch</translation>
    </message>
    <message>
        <source>&amp;My Documents</source>
        <translation>&amp;Eigene Dokumente</translation>
    </message>
    <message>
        <source>F&amp;avorites</source>
        <translation>&amp;Favoriten</translation>
    </message>
    <message>
        <source>My &amp;Pictures</source>
        <translation>Eigene &amp;Bilder</translation>
    </message>
    <message>
        <source>D&amp;rive</source>
        <translation>&amp;Laufwerk</translation>
    </message>
    <message>
        <source>Drive</source>
        <translation>Laufwerk</translation>
    </message>
    <message>
        <source>&amp;Directory</source>
        <translation>O&amp;rdner</translation>
    </message>
    <message>
        <source>Directory</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>&amp;Filename</source>
        <translation>Datei&amp;name</translation>
    </message>
    <message>
        <source>Filename</source>
        <translation>Dateiname</translation>
    </message>
    <message>
        <source>Image Media Properties</source>
        <translation>Eigenschaften des Mediums</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>Name of the file</source>
        <translation>Name der Datei</translation>
    </message>
    <message>
        <source>Image Colors:</source>
        <translation>Farben des Bilds:</translation>
    </message>
    <message>
        <source>Image Width:</source>
        <translation>Breite des Bilds:</translation>
    </message>
    <message>
        <source>File Size:</source>
        <translation>Dateigröße:</translation>
    </message>
    <message>
        <source>Image Height:</source>
        <translation>Höhe des Bilds:</translation>
    </message>
    <message>
        <source>&amp;Search Sub Folders</source>
        <translation>&amp;Unterordner durchsuchen</translation>
    </message>
    <message>
        <source>Search Sub Folders</source>
        <translation>Unterordner durchsuchen</translation>
    </message>
    <message>
        <source>Display &apos;Select File &amp;Types Options&apos;</source>
        <translation>Optionen „Da&amp;teitypen auswählen“ anzeigen</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
</context>
<context>
    <name>frmSlideShowFullScreen</name>
    <message>
        <source>Stopped</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Tessaly Lumora - Full Screen Media Viewer</source>
        <translation>Tessaly Lumora - Vollbildansicht</translation>
    </message>
    <message>
        <source>Current image</source>
        <translation>Aktuelles Bild</translation>
    </message>
    <message>
        <source>Full screen picture</source>
        <translation>Bild über den ganzen Bildschirm</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Close the full screen viewer (Esc)</source>
        <translation>Vollbildansicht schließen (Esc)</translation>
    </message>
</context>
<context>
    <name>frmSystemTray</name>
    <message>
        <source>&amp;Restore</source>
        <translation>Wieder&amp;herstellen</translation>
    </message>
    <message>
        <source>Ma&amp;ximize</source>
        <translation>Ma&amp;ximieren</translation>
    </message>
    <message>
        <source>Mi&amp;nimize</source>
        <translation>Mi&amp;nimieren</translation>
    </message>
    <message>
        <source>-&amp;Load List</source>
        <translation>-Liste &amp;laden</translation>
    </message>
    <message>
        <source>&amp;Save List</source>
        <translation>Liste &amp;speichern</translation>
    </message>
    <message>
        <source>-&amp;Run Full Screen Media Show</source>
        <translation>-&amp;Vollbild-Medienschau starten</translation>
    </message>
    <message>
        <source>Slide Show &amp;Time Interval</source>
        <translation>Wechsel&amp;intervall</translation>
    </message>
    <message>
        <source>-&amp;Previous Media File</source>
        <translation>-V&amp;orherige Mediendatei</translation>
    </message>
    <message>
        <source>&amp;Next Media File</source>
        <translation>Nä&amp;chste Mediendatei</translation>
    </message>
    <message>
        <source>-&amp;About</source>
        <translation>-In&amp;fo</translation>
    </message>
    <message>
        <source>&amp;Exit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Tessaly Lumora V3</source>
        <translation>Tessaly Lumora V3</translation>
    </message>
</context>
<context>
    <name>frmThumbNail</name>
    <message>
        <source>Tessaly Lumora - Thumbnail Viewer</source>
        <translation>Tessaly Lumora - Miniaturübersicht</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Miniaturansichten</translation>
    </message>
    <message>
        <source>First thumbnail of the page</source>
        <translation>Erste Miniaturansicht der Seite</translation>
    </message>
    <message>
        <source>Current Image:</source>
        <translation>Aktuelles Bild:</translation>
    </message>
    <message>
        <source>&amp;Thumbnails</source>
        <translation>&amp;Miniaturansichten</translation>
    </message>
    <message>
        <source>Click thumbnail to display image information in status bar.  Double-click to show file in the Main Viewer.</source>
        <translation>Ein Klick auf eine Miniaturansicht zeigt Angaben zum Bild in der Statusleiste.  Ein Doppelklick zeigt die Datei in der Hauptansicht.</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Properties</source>
        <translation>&amp;Eigenschaften</translation>
    </message>
    <message>
        <source>-&amp;Close Viewer</source>
        <translation>-Übersicht &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>C&amp;opy Image Filename to Clipboard</source>
        <translation>Datei&amp;namen des Bilds in die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>&amp;Copy Image to Clipboard</source>
        <translation>Bild in die Zwischenablage &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Toolbars</source>
        <translation>&amp;Symbolleisten</translation>
    </message>
    <message>
        <source>&amp;Main Toolbar</source>
        <translation>&amp;Hauptsymbolleiste</translation>
    </message>
    <message>
        <source>Show Captions</source>
        <translation>Beschriftungen anzeigen</translation>
    </message>
    <message>
        <source>Captions at Bottom</source>
        <translation>Beschriftungen unten</translation>
    </message>
    <message>
        <source>Captions at Right</source>
        <translation>Beschriftungen rechts</translation>
    </message>
    <message>
        <source>-&amp;Show Image Names</source>
        <translation>-&amp;Bildnamen anzeigen</translation>
    </message>
    <message>
        <source>Thumb&amp;Nail Size</source>
        <translation>&amp;Größe der Miniaturansichten</translation>
    </message>
    <message>
        <source>T&amp;humbnail Style</source>
        <translation>S&amp;til der Miniaturansichten</translation>
    </message>
    <message>
        <source>Th&amp;umbnail Background Color</source>
        <translation>&amp;Hintergrundfarbe der Miniaturansichten</translation>
    </message>
    <message>
        <source>-&amp;Display Image in Main Viewer</source>
        <translation>-Bild in der Haupt&amp;ansicht anzeigen</translation>
    </message>
    <message>
        <source>Display in &amp;Zoom Viewer / Pixelon</source>
        <translation>In &amp;Zoomansicht / Pixelon anzeigen</translation>
    </message>
    <message>
        <source>-&amp;Refresh</source>
        <translation>-A&amp;ktualisieren</translation>
    </message>
    <message>
        <source>&amp;Generate All Thumbnails</source>
        <translation>&amp;Alle Miniaturansichten erzeugen</translation>
    </message>
    <message>
        <source>G&amp;enerate All Sizes of Thumbnails</source>
        <translation>Miniaturansichten in allen &amp;Größen erzeugen</translation>
    </message>
    <message>
        <source>-Co&amp;mpact Thumbnail Database</source>
        <translation>-Datenbank der Miniaturansichten &amp;verdichten</translation>
    </message>
    <message>
        <source>C&amp;lear Thumbnail Cache All Sizes</source>
        <translation>&amp;Zwischenspeicher aller Größen leeren</translation>
    </message>
    <message>
        <source>&amp;Clear Thumbnail Cache For Current Size</source>
        <translation>Zwischenspeicher der aktuellen Größe &amp;leeren</translation>
    </message>
    <message>
        <source>-&amp;Overwrite existing thumbnails</source>
        <translation>-Vorhandene Miniaturansichten ü&amp;berschreiben</translation>
    </message>
    <message>
        <source>Use &amp;Thumbnails Caching</source>
        <translation>Miniaturansichten z&amp;wischenspeichern</translation>
    </message>
    <message>
        <source>-Thumbnail Database &amp;Stats</source>
        <translation>-&amp;Statistik der Datenbank</translation>
    </message>
    <message>
        <source>&amp;Options</source>
        <translation>&amp;Optionen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Check for &amp;New Version</source>
        <translation>Nach &amp;neuer Version suchen</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Info</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Close Thumbnail Viewer</source>
        <translation>Miniaturübersicht schließen</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy Selected Image Filename to Clipboard</source>
        <translation>Dateinamen des ausgewählten Bilds in die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>Labels</source>
        <translation>Namen</translation>
    </message>
    <message>
        <source>Show Image Name Labels</source>
        <translation>Namen der Bilder anzeigen</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Display Selected Image In Main Viewer</source>
        <translation>Ausgewähltes Bild in der Hauptansicht anzeigen</translation>
    </message>
    <message>
        <source>Editor</source>
        <translation>Editor</translation>
    </message>
    <message>
        <source>Display Image in Pixelon Editor</source>
        <translation>Bild im Editor Pixelon anzeigen</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Eigenschaften</translation>
    </message>
    <message>
        <source>Display Selected Image Properties</source>
        <translation>Eigenschaften des ausgewählten Bilds anzeigen</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Select the thumbnail size</source>
        <translation>Größe der Miniaturansichten auswählen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Display Help - About</source>
        <translation>Hilfe und Informationen anzeigen</translation>
    </message>
    <message>
        <source>&amp;Make ThumbNail</source>
        <translation>&amp;Miniaturansicht erzeugen</translation>
    </message>
    <message>
        <source>C&amp;opy Media Filename to Clipboard</source>
        <translation>Datei&amp;namen der Mediendatei in die Zwischenablage kopieren</translation>
    </message>
    <message>
        <source>&amp;Display Media File</source>
        <translation>Mediendatei &amp;anzeigen</translation>
    </message>
    <message>
        <source>&amp;About Tessaly Graphics Viewer</source>
        <translation>&amp;Info über den Tessaly-Grafikbetrachter</translation>
    </message>
    <message>
        <source>&amp;Associate File Types</source>
        <translation>Dateitypen &amp;zuordnen</translation>
    </message>
    <message>
        <source>&amp;Default Folder Options</source>
        <translation>Standard&amp;ordner</translation>
    </message>
    <message>
        <source>&amp;Information Summary</source>
        <translation>&amp;Informationsübersicht</translation>
    </message>
    <message>
        <source>M&amp;edia Player Options</source>
        <translation>&amp;Wiedergabe</translation>
    </message>
    <message>
        <source>&amp;Quality / Size Options</source>
        <translation>&amp;Qualität / Größe</translation>
    </message>
    <message>
        <source>Select &amp;File Types</source>
        <translation>&amp;Dateitypen auswählen</translation>
    </message>
    <message>
        <source>&amp;Thumbnail Options</source>
        <translation>&amp;Miniaturansichten</translation>
    </message>
</context>
<context>
    <name>frmTip</name>
    <message>
        <source>Tip of the Day</source>
        <translation>Tipp des Tages</translation>
    </message>
    <message>
        <source>Did you know...</source>
        <translation>Wussten Sie schon...</translation>
    </message>
    <message>
        <source>&amp;Show Tips at Startup</source>
        <translation>Tipps beim &amp;Start anzeigen</translation>
    </message>
    <message>
        <source>&amp;Next Tip</source>
        <translation>&amp;Nächster Tipp</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
</context>
<context>
    <name>frmZoomView</name>
    <message>
        <source>Tessaly Lumora - Pixelon / Zoom Viewer</source>
        <translation>Tessaly Lumora - Pixelon / Zoomansicht</translation>
    </message>
</context>
<context>
    <name>frmlocatefiles</name>
    <message>
        <source>Lumora V3</source>
        <translation>Lumora V3</translation>
    </message>
    <message>
        <source>Lumora is scanning the selected Drive and Folder(s) for graphic image files.</source>
        <translation>Lumora durchsucht das ausgewählte Laufwerk und seine Ordner nach Grafikdateien.</translation>
    </message>
    <message>
        <source>Searching</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
</context>
</TS>
