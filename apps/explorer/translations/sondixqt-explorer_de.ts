<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name>Explorer::BenchControl</name>
    <message>
        <source>The sensor-access library is not the simulator.</source>
        <translation>Die Sensorbibliothek ist nicht der Simulator.</translation>
    </message>
</context>
<context>
    <name>Explorer::BenchMenu</name>
    <message>
        <source>&amp;Bench</source>
        <translation>&amp;Prüfstand</translation>
    </message>
    <message>
        <source>Load the b&amp;uilt-in bench</source>
        <translation>&amp;Eingebauten Prüfstand laden</translation>
    </message>
    <message>
        <source>&amp;Plugged in</source>
        <translation>Ein&amp;gesteckt</translation>
    </message>
    <message>
        <source>&amp;Silent</source>
        <translation>&amp;Stumm</translation>
    </message>
    <message>
        <source>&amp;Trigger</source>
        <translation>&amp;Triggern</translation>
    </message>
    <message>
        <source>&amp;Inject a fault</source>
        <translation>&amp;Fehler einspielen</translation>
    </message>
    <message>
        <source>&amp;Remove a fault</source>
        <translation>Fehler &amp;entfernen</translation>
    </message>
    <message>
        <source>Remove &amp;all faults</source>
        <translation>&amp;Alle Fehler entfernen</translation>
    </message>
    <message>
        <source>all faults removed</source>
        <translation>alle Fehler entfernt</translation>
    </message>
    <message>
        <source>Load a bench file</source>
        <translation>Prüfstandsdatei laden</translation>
    </message>
    <message>
        <source>Bench files (*.json)</source>
        <translation>Prüfstandsdateien (*.json)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>built-in bench loaded</source>
        <translation>eingebauter Prüfstand geladen</translation>
    </message>
    <message>
        <source>bench loaded: %1</source>
        <translation>Prüfstand geladen: %1</translation>
    </message>
    <message>
        <source>%1 plugged in</source>
        <translation>%1 eingesteckt</translation>
    </message>
    <message>
        <source>%1 unplugged</source>
        <translation>%1 abgezogen</translation>
    </message>
    <message>
        <source>%1 sends nothing</source>
        <translation>%1 sendet nichts</translation>
    </message>
    <message>
        <source>%1 sends again</source>
        <translation>%1 sendet wieder</translation>
    </message>
    <message>
        <source>%1 triggered</source>
        <translation>%1 getriggert</translation>
    </message>
    <message>
        <source>The next transfer fails</source>
        <translation>Die nächste Übertragung schlägt fehl</translation>
    </message>
    <message>
        <source>Every command takes two seconds</source>
        <translation>Jeder Befehl dauert zwei Sekunden</translation>
    </message>
    <message>
        <source>Every command is refused</source>
        <translation>Jeder Befehl wird abgelehnt</translation>
    </message>
    <message>
        <source>The next command hangs until all faults are removed</source>
        <translation>Der nächste Befehl hängt, bis alle Fehler entfernt sind</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>fault removed: %1</source>
        <translation>Fehler entfernt: %1</translation>
    </message>
    <message>
        <source>fault injected into %1: %2</source>
        <translation>Fehler eingespielt in %1: %2</translation>
    </message>
    <message>
        <source>all sensors</source>
        <translation>alle Sensoren</translation>
    </message>
    <message>
        <source>Inject a fault</source>
        <translation>Fehler einspielen</translation>
    </message>
    <message>
        <source>Injected fault</source>
        <translation>Eingespielter Fehler</translation>
    </message>
    <message>
        <source>always</source>
        <translation>immer</translation>
    </message>
    <message>
        <source>&amp;Sensor:</source>
        <translation>&amp;Sensor:</translation>
    </message>
    <message>
        <source>Co&amp;mmand:</source>
        <translation>&amp;Befehl:</translation>
    </message>
    <message>
        <source>&amp;Error number:</source>
        <translation>&amp;Fehlernummer:</translation>
    </message>
    <message>
        <source>Error te&amp;xt:</source>
        <translation>Fehlerte&amp;xt:</translation>
    </message>
    <message>
        <source>&amp;Times:</source>
        <translation>&amp;Anzahl:</translation>
    </message>
    <message>
        <source>Inject</source>
        <translation>Einspielen</translation>
    </message>
    <message>
        <source>The bench refuses: %1</source>
        <translation>Der Prüfstand lehnt ab: %1</translation>
    </message>
    <message>
        <source>&amp;Load a bench file ...</source>
        <translation>Prüfstandsdatei &amp;laden ...</translation>
    </message>
    <message>
        <source>Inject another fault ...</source>
        <translation>Anderen Fehler einspielen ...</translation>
    </message>
</context>
<context>
    <name>Explorer::CurvesPlot</name>
    <message>
        <source>Signal of: %1</source>
        <translation>Signal für: %1</translation>
    </message>
    <message>
        <source>All shown signals</source>
        <translation>Alle gezeigten Signale</translation>
    </message>
</context>
<context>
    <name>Explorer::EnglishTexts</name>
    <message>
        <source>&apos;%1&apos; is no sensor address; one reads &lt;model&gt;@&lt;interface&gt;,&lt;name&gt;=&lt;value&gt;,..., such as TX270@RS232,port=COM3,baudrate=115200</source>
        <translation>„%1“ ist keine Sensoradresse; eine lautet &lt;Modell&gt;@&lt;Schnittstelle&gt;,&lt;Name&gt;=&lt;Wert&gt;,..., etwa TX270@RS232,port=COM3,baudrate=115200</translation>
    </message>
    <message>
        <source>&apos;%1&apos; in a sensor&apos;s address is no &lt;name&gt;=&lt;value&gt;</source>
        <translation>„%1“ in einer Sensoradresse ist kein &lt;Name&gt;=&lt;Wert&gt;</translation>
    </message>
    <message>
        <source>the sensor&apos;s address has two values of &apos;%1&apos;</source>
        <translation>die Sensoradresse hat zwei Werte für „%1“</translation>
    </message>
    <message>
        <source>the %1 &apos;%2&apos; is no whole number</source>
        <translation>%1 „%2“ ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>the %1 %2 is not from %3 to %4</source>
        <translation>%1 %2 liegt nicht zwischen %3 und %4</translation>
    </message>
    <message>
        <source>there is no %1 &apos;%2&apos;; %3</source>
        <translation>unbekannt: %1 „%2“; %3</translation>
    </message>
    <message>
        <source>model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>interface</source>
        <translation>Schnittstelle</translation>
    </message>
    <message>
        <source>interface parameter</source>
        <translation>Parameter der Schnittstelle</translation>
    </message>
    <message>
        <source>did you mean %1 or %2 or %3?</source>
        <translation>meinten Sie %1 oder %2 oder %3?</translation>
    </message>
    <message>
        <source>did you mean %1 or %2?</source>
        <translation>meinten Sie %1 oder %2?</translation>
    </message>
    <message>
        <source>did you mean %1?</source>
        <translation>meinten Sie %1?</translation>
    </message>
    <message>
        <source>models have names such as TX270</source>
        <translation>Modelle heißen etwa TX270</translation>
    </message>
    <message>
        <source>the interfaces are %1</source>
        <translation>es gibt die Schnittstellen %1</translation>
    </message>
    <message>
        <source>they are %1</source>
        <translation>es gibt %1</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no PARAMETER=VALUE, such as SP_Measrate=2.5</source>
        <translation>„%1“ ist kein PARAMETER=WERT, etwa SP_Measrate=2.5</translation>
    </message>
    <message>
        <source>&apos;S_Command&apos; is the command itself and no parameter of one</source>
        <translation>„S_Command“ ist der Befehl selbst und keiner seiner Parameter</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is given twice</source>
        <translation>„%1“ ist zweimal angegeben</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has characters that cannot be sent to a sensor</source>
        <translation>„%1“ hat Zeichen, die nicht an einen Sensor gesendet werden können</translation>
    </message>
    <message>
        <source>the number in &apos;%1&apos; is too large for an integer; with a point it is a decimal</source>
        <translation>die Zahl in „%1“ ist zu groß für eine ganze Zahl; mit einem Punkt ist sie eine Dezimalzahl</translation>
    </message>
    <message>
        <source>the number in &apos;%1&apos; is too large</source>
        <translation>die Zahl in „%1“ ist zu groß</translation>
    </message>
    <message>
        <source>the double quotes in &apos;%1&apos; do not enclose the value</source>
        <translation>die Anführungszeichen in „%1“ umschließen nicht den Wert</translation>
    </message>
    <message>
        <source>&apos;%1&apos; gives no value; two double quotes stand for an empty text</source>
        <translation>„%1“ hat keinen Wert; zwei Anführungszeichen stehen für einen leeren Text</translation>
    </message>
    <message>
        <source>the search for %1 was refused: %2</source>
        <translation>die Suche nach %1 wurde abgelehnt: %2</translation>
    </message>
    <message>
        <source>%1 cannot be searched for: %2</source>
        <translation>%1 kann nicht gesucht werden: %2</translation>
    </message>
    <message>
        <source>the sensor-access library does not support it</source>
        <translation>die Sensorbibliothek unterstützt das nicht</translation>
    </message>
    <message>
        <source>the search could not be aborted: %1</source>
        <translation>die Suche konnte nicht abgebrochen werden: %1</translation>
    </message>
    <message>
        <source>the search did not end within %1 s; its progress cannot be read: %2</source>
        <translation>die Suche war nach %1 s nicht beendet; ihr Fortschritt kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>the search did not end within %1 s</source>
        <translation>die Suche war nach %1 s nicht beendet</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>the sensor-access library does not support this model</source>
        <translation>die Sensorbibliothek unterstützt dieses Modell nicht</translation>
    </message>
    <message>
        <source>the sensor refuses %1: %2</source>
        <translation>der Sensor lehnt %1 ab: %2</translation>
    </message>
    <message>
        <source>the sensor reports error %1</source>
        <translation>der Sensor meldet den Fehler %1</translation>
    </message>
    <message>
        <source>the reader has stopped</source>
        <translation>das Lesen ist beendet</translation>
    </message>
    <message>
        <source>cannot write &apos;%1&apos;: .npy needs a file</source>
        <translation>„%1“ kann nicht geschrieben werden: .npy braucht eine Datei</translation>
    </message>
    <message>
        <source>cannot write &apos;%1&apos; to the disk: %2</source>
        <translation>„%1“ kann nicht auf den Datenträger geschrieben werden: %2</translation>
    </message>
    <message>
        <source>cannot write &apos;%1&apos;: %2</source>
        <translation>„%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>it is a directory</source>
        <translation>es ist ein Ordner</translation>
    </message>
    <message>
        <source>it is write-protected</source>
        <translation>es ist schreibgeschützt</translation>
    </message>
    <message>
        <source>%1; all of it is in &apos;%2&apos;</source>
        <translation>%1; alles steht in „%2“</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>Zeile %1: %2</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>&apos;%1&apos; are not the columns of a recording</source>
        <translation>„%1“ sind nicht die Spalten einer Aufzeichnung</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no JSON object</source>
        <translation>„%1“ ist kein JSON-Objekt</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no number of a frame</source>
        <translation>„%1“ ist keine Nummer eines Datensatzes</translation>
    </message>
    <message>
        <source>frame %1 of the file: &apos;%2&apos; is no number of a frame</source>
        <translation>Datensatz %1 der Datei: „%2“ ist keine Nummer eines Datensatzes</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no raw value</source>
        <translation>„%1“ ist kein Rohwert</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no time</source>
        <translation>„%1“ ist keine Zeit</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is no value, and too many others are none</source>
        <translation>„%1“ ist kein Wert, und zu viele andere sind auch keiner</translation>
    </message>
    <message>
        <source>it has not the %1 columns of the file</source>
        <translation>sie hat nicht die %1 Spalten der Datei</translation>
    </message>
    <message>
        <source>it is no recording, or cut: a line with the names of the columns is missing</source>
        <translation>es ist keine Aufzeichnung, oder sie ist abgeschnitten: eine Zeile mit den Namen der Spalten fehlt</translation>
    </message>
    <message>
        <source>it is no recording, or cut: there are neither a head nor frames</source>
        <translation>es ist keine Aufzeichnung, oder sie ist abgeschnitten: sie hat weder einen Kopf noch Datensätze</translation>
    </message>
    <message>
        <source>it is no recording: the object has no &apos;head&apos; and no &apos;frame&apos;</source>
        <translation>es ist keine Aufzeichnung: das Objekt hat weder „head“ noch „frame“</translation>
    </message>
    <message>
        <source>it is too long for a recording</source>
        <translation>sie ist zu lang für eine Aufzeichnung</translation>
    </message>
    <message>
        <source>the array has not the columns of a recording</source>
        <translation>das Feld hat nicht die Spalten einer Aufzeichnung</translation>
    </message>
    <message>
        <source>the file is cut: it has only %1 of the %2 frames that its header tells of</source>
        <translation>die Datei ist abgeschnitten: sie hat nur %1 der %2 Datensätze, die ihr Kopf nennt</translation>
    </message>
    <message>
        <source>the frame has %1 instead of %2 raw values</source>
        <translation>der Datensatz hat %1 statt %2 Rohwerte</translation>
    </message>
    <message>
        <source>the frame has %1 instead of %2 values</source>
        <translation>der Datensatz hat %1 statt %2 Werte</translation>
    </message>
    <message>
        <source>the frame has no time</source>
        <translation>der Datensatz hat keine Zeit</translation>
    </message>
    <message>
        <source>the frame has no values</source>
        <translation>der Datensatz hat keine Werte</translation>
    </message>
    <message>
        <source>the gap is described incompletely</source>
        <translation>die Lücke ist unvollständig beschrieben</translation>
    </message>
    <message>
        <source>the head describes no signals</source>
        <translation>der Kopf beschreibt keine Signale</translation>
    </message>
    <message>
        <source>the header of the array is cut or no header of .npy</source>
        <translation>der Kopf des Felds ist abgeschnitten oder keiner von .npy</translation>
    </message>
    <message>
        <source>the last frame is incomplete and is left out</source>
        <translation>der letzte Datensatz ist unvollständig und wird ausgelassen</translation>
    </message>
    <message>
        <source>the last line is incomplete and is left out</source>
        <translation>die letzte Zeile ist unvollständig und wird ausgelassen</translation>
    </message>
    <message>
        <source>the number of the frame is none</source>
        <translation>die Nummer des Datensatzes ist keine</translation>
    </message>
    <message>
        <source>the raw value %1 is no whole number</source>
        <translation>der Rohwert %1 ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>the value %1 is neither a number nor an error value</source>
        <translation>der Wert %1 ist weder eine Zahl noch ein Fehlerwert</translation>
    </message>
    <message>
        <source>the sensor does not report its serial number, which was %1</source>
        <translation>der Sensor meldet seine Seriennummer nicht, die %1 war</translation>
    </message>
</context>
<context>
    <name>Explorer::ExportBar</name>
    <message>
        <source>Progress of the export</source>
        <translation>Fortschritt des Exports</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>Explorer::Extensions</name>
    <message>
        <source>Rec&amp;ord</source>
        <translation>Auf&amp;zeichnen</translation>
    </message>
    <message>
        <source>Record &amp;to ...</source>
        <translation>Aufzeichnen &amp;nach ...</translation>
    </message>
    <message>
        <source>&amp;Video line</source>
        <translation>&amp;Videozeile</translation>
    </message>
    <message>
        <source>Web &amp;interface</source>
        <translation>Web&amp;oberfläche</translation>
    </message>
    <message>
        <source>Bench</source>
        <translation>Prüfstand</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Show the page in the browser once more</source>
        <translation>Die Seite noch einmal im Browser anzeigen</translation>
    </message>
    <message>
        <source>Go on reading</source>
        <translation>Weiterlesen</translation>
    </message>
    <message>
        <source>Video line</source>
        <translation>Videozeile</translation>
    </message>
</context>
<context>
    <name>Explorer::FindPanel</name>
    <message>
        <source>&amp;Search</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>&amp;Open</source>
        <translation>Ö&amp;ffnen</translation>
    </message>
    <message>
        <source>Search for sensors</source>
        <translation>Sensoren suchen</translation>
    </message>
    <message>
        <source>Sensors</source>
        <translation>Sensoren</translation>
    </message>
    <message>
        <source>State of the search</source>
        <translation>Stand der Suche</translation>
    </message>
    <message>
        <source>Progress of the search</source>
        <translation>Fortschritt der Suche</translation>
    </message>
    <message>
        <source>Not searched yet.</source>
        <translation>Noch nicht gesucht.</translation>
    </message>
    <message>
        <source>Interfaces to search</source>
        <translation>Zu durchsuchende Schnittstellen</translation>
    </message>
    <message>
        <source>Groups of models to search for</source>
        <translation>Zu suchende Modellgruppen</translation>
    </message>
    <message>
        <source>Model to search for</source>
        <translation>Zu suchendes Modell</translation>
    </message>
    <message>
        <source>All groups</source>
        <translation>Alle Gruppen</translation>
    </message>
    <message>
        <source>Interfaces</source>
        <translation>Schnittstellen</translation>
    </message>
    <message>
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Address of a sensor</source>
        <translation>Adresse eines Sensors</translation>
    </message>
    <message>
        <source>Open the sensor at this address</source>
        <translation>Sensor unter dieser Adresse öffnen</translation>
    </message>
    <message>
        <source>What is wrong with the address</source>
        <translation>Was an der Adresse falsch ist</translation>
    </message>
    <message>
        <source>Open by &amp;address</source>
        <translation>Über &amp;Adresse öffnen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Copy address</source>
        <translation>Adresse kopieren</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Vergessen</translation>
    </message>
    <message>
        <source>&amp;Cancel search</source>
        <translation>Suche &amp;abbrechen</translation>
    </message>
    <message>
        <source>Searching ...</source>
        <translation>Suche läuft ...</translation>
    </message>
    <message>
        <source>Searching ... found so far: %1</source>
        <translation>Suche läuft ... bisher gefunden: %1</translation>
    </message>
    <message>
        <source>Sensors found: %1.</source>
        <translation>Gefundene Sensoren: %1.</translation>
    </message>
    <message>
        <source>All models</source>
        <translation>Alle Modelle</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>All interfaces</source>
        <translation>Alle Schnittstellen</translation>
    </message>
    <message>
        <source>%1 interfaces</source>
        <translation>%1 Schnittstellen</translation>
    </message>
    <message>
        <source>Ending the search ...</source>
        <translation>Suche wird beendet ...</translation>
    </message>
    <message>
        <source>Ending the search to open %1 ...</source>
        <translation>Suche wird beendet, um %1 zu öffnen ...</translation>
    </message>
    <message>
        <source>Remembered sensors: %1.</source>
        <translation>Gemerkte Sensoren: %1.</translation>
    </message>
    <message>
        <source>&lt;model&gt;@&lt;interface&gt;,&lt;name&gt;=&lt;value&gt;,... such as TX270@RS232,port=COM3 or CC430@TCP/IP,address=169.254.168.150</source>
        <translation>&lt;Modell&gt;@&lt;Schnittstelle&gt;,&lt;Name&gt;=&lt;Wert&gt;,... wie TX270@RS232,port=COM3 oder CC430@TCP/IP,address=169.254.168.150</translation>
    </message>
    <message>
        <source>Sensors that were found or opened stand here. A double click opens them.</source>
        <translation>Hier stehen gefundene und geöffnete Sensoren. Ein Doppelklick öffnet sie.</translation>
    </message>
</context>
<context>
    <name>Explorer::FrameExport</name>
    <message>
        <source>the values were forgotten before they were written</source>
        <translation>die Werte wurden verworfen, bevor sie geschrieben waren</translation>
    </message>
</context>
<context>
    <name>Explorer::GapItem</name>
    <message>
        <source>%1 lost</source>
        <translation>%1 verloren</translation>
    </message>
    <message>
        <source>gap</source>
        <translation>Lücke</translation>
    </message>
    <message>
        <source>An unknown number of frames is missing: %1</source>
        <translation>Eine unbekannte Zahl von Datensätzen fehlt: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n frame(s) missing: %1</source>
        <translation>
            <numerusform>%n Datensatz fehlt: %1</numerusform>
            <numerusform>%n Datensätze fehlen: %1</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Explorer::LibraryMessages</name>
    <message>
        <source>dropped messages: %1</source>
        <translation>verworfene Meldungen: %1</translation>
    </message>
</context>
<context>
    <name>Explorer::LibraryTexts</name>
    <message>
        <source>values were not read or processed in time</source>
        <translation>Werte wurden nicht rechtzeitig gelesen oder verarbeitet</translation>
    </message>
    <message>
        <source>values were not processed in time</source>
        <translation>Werte wurden nicht rechtzeitig verarbeitet</translation>
    </message>
    <message>
        <source>the sensor was disconnected</source>
        <translation>der Sensor war getrennt</translation>
    </message>
    <message>
        <source>a setting has interrupted the measurement</source>
        <translation>eine Einstellung hat die Messung unterbrochen</translation>
    </message>
    <message>
        <source>the times of the values do not fit</source>
        <translation>die Zeiten der Werte passen nicht zueinander</translation>
    </message>
    <message>
        <source>%1 lost</source>
        <translation>%1 verloren</translation>
    </message>
    <message>
        <source>some lost</source>
        <translation>etwas verloren</translation>
    </message>
    <message>
        <source>at least %1 lost</source>
        <translation>mind. %1 verloren</translation>
    </message>
    <message>
        <source>1 frame was lost: %1</source>
        <translation>1 Datensatz ging verloren: %1</translation>
    </message>
    <message>
        <source>%1 frames were lost: %2</source>
        <translation>%1 Datensätze gingen verloren: %2</translation>
    </message>
    <message>
        <source>an unknown number of frames was lost in 1 gap: %1</source>
        <translation>eine unbekannte Zahl von Datensätzen ging in 1 Lücke verloren: %1</translation>
    </message>
    <message>
        <source>an unknown number of frames was lost in %1 gaps: %2</source>
        <translation>eine unbekannte Zahl von Datensätzen ging in %1 Lücken verloren: %2</translation>
    </message>
    <message>
        <source>card %1</source>
        <translation>Karte %1</translation>
    </message>
    <message>
        <source>device %1</source>
        <translation>Gerät %1</translation>
    </message>
    <message>
        <source>channel %1</source>
        <translation>Kanal %1</translation>
    </message>
    <message>
        <source>bus address %1</source>
        <translation>Busadresse %1</translation>
    </message>
    <message>
        <source>the sensor has sent no values for %1 s</source>
        <translation>der Sensor hat seit %1 s keine Werte gesendet</translation>
    </message>
    <message>
        <source>the sensor reports %1 values per frame</source>
        <translation>der Sensor meldet %1 Werte je Datensatz</translation>
    </message>
    <message>
        <source>another sensor answers: serial number %1 instead of %2</source>
        <translation>ein anderer Sensor antwortet: Seriennummer %1 statt %2</translation>
    </message>
    <message>
        <source>missing frames: %1 (gaps: %2), and an unknown number (gaps: %3): %4</source>
        <translation>fehlende Datensätze: %1 (Lücken: %2) und eine unbekannte Zahl (Lücken: %3): %4</translation>
    </message>
    <message>
        <source>an unknown number of frames is missing in %1 gaps (%2)</source>
        <translation>eine unbekannte Zahl von Datensätzen fehlt in %1 Lücken (%2)</translation>
    </message>
    <message>
        <source>an unknown number of frames is missing (%1)</source>
        <translation>eine unbekannte Zahl von Datensätzen fehlt (%1)</translation>
    </message>
    <message>
        <source>missing frames: %1 in %2 gaps (%3)</source>
        <translation>fehlende Datensätze: %1 in %2 Lücken (%3)</translation>
    </message>
    <message>
        <source>missing frames: %1 (%2)</source>
        <translation>fehlende Datensätze: %1 (%2)</translation>
    </message>
    <message>
        <source>memory full: only the last %1 frames kept</source>
        <translation>Speicher voll: nur die letzten %1 Datensätze sind da</translation>
    </message>
    <message>
        <source>values were not read in time, or the line was too slow</source>
        <translation>Werte wurden nicht rechtzeitig gelesen, oder die Leitung war zu langsam</translation>
    </message>
</context>
<context>
    <name>Explorer::LogModel</name>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Sensor</source>
        <translation>Sensor</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
</context>
<context>
    <name>Explorer::LogPanel</name>
    <message>
        <source>Every call</source>
        <translation>Jeder Aufruf</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Show only entries with this text</source>
        <translation>Nur Einträge mit diesem Text zeigen</translation>
    </message>
    <message>
        <source>Show only entries of this kind</source>
        <translation>Nur Einträge dieser Art zeigen</translation>
    </message>
    <message>
        <source>Everything</source>
        <translation>Alles</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>States</source>
        <translation>Zustände</translation>
    </message>
    <message>
        <source>Answers</source>
        <translation>Antworten</translation>
    </message>
    <message>
        <source>Calls</source>
        <translation>Aufrufe</translation>
    </message>
    <message>
        <source>Also shows every opening, closing and command</source>
        <translation>Zeigt auch jedes Öffnen, Schließen und jeden Befehl</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
</context>
<context>
    <name>Explorer::Main</name>
    <message>
        <source>Finds measuring sensors, shows what they send and sets them up.</source>
        <translation>Findet messende Sensoren, zeigt, was sie senden, und stellt sie ein.</translation>
    </message>
    <message>
        <source>Bench file for the simulator, if that is the sensor-access library.</source>
        <translation>Prüfstandsdatei für den Simulator, wenn er die Sensorbibliothek ist.</translation>
    </message>
    <message>
        <source>Language, such as de or en.</source>
        <translation>Sprache, etwa de oder en.</translation>
    </message>
    <message>
        <source>Addresses of sensors and recordings to open.</source>
        <translation>Adressen von Sensoren und Aufzeichnungen, die geöffnet werden.</translation>
    </message>
</context>
<context>
    <name>Explorer::MainWindow</name>
    <message>
        <source>See a sensor</source>
        <translation>Einen Sensor ansehen</translation>
    </message>
    <message>
        <source>Search for the sensors that are connected to this computer, or open one whose address is known. Its values then appear here; its settings are on the right. Sensors that were found once stay in the list on the left: a double click opens them.</source>
        <translation>Suchen Sie die Sensoren, die an diesem Rechner angeschlossen sind, oder öffnen Sie einen, dessen Adresse bekannt ist. Seine Werte erscheinen dann hier, seine Einstellungen rechts. Einmal gefundene Sensoren bleiben links in der Liste: Ein Doppelklick öffnet sie.</translation>
    </message>
    <message>
        <source>Search for sensors</source>
        <translation>Sensoren suchen</translation>
    </message>
    <message>
        <source>Open by address ...</source>
        <translation>Über Adresse öffnen ...</translation>
    </message>
    <message>
        <source>Sensors</source>
        <translation>Sensoren</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Sensor</source>
        <translation>Sensor</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>%1 frames</source>
        <translation>%1 Datensätze</translation>
    </message>
    <message>
        <source>%1, %2 % read</source>
        <translation>%1, %2 % gelesen</translation>
    </message>
    <message>
        <source>Main toolbar</source>
        <translation>Werkzeugleiste</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Sensor</source>
        <translation>&amp;Sensor</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Search for sensors</source>
        <translation>Sensoren &amp;suchen</translation>
    </message>
    <message>
        <source>Open by &amp;address ...</source>
        <translation>Über &amp;Adresse öffnen ...</translation>
    </message>
    <message>
        <source>Open address</source>
        <translation>Adresse öffnen</translation>
    </message>
    <message>
        <source>Open &amp;recording ...</source>
        <translation>Auf&amp;zeichnung öffnen ...</translation>
    </message>
    <message>
        <source>Open recording</source>
        <translation>Aufzeichnung öffnen</translation>
    </message>
    <message>
        <source>Recordings (*.csv *.jsonl *.npy);;All files (*)</source>
        <translation>Aufzeichnungen (*.csv *.jsonl *.npy);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Open recent &amp;sensor</source>
        <translation>&amp;Letzten Sensor öffnen</translation>
    </message>
    <message>
        <source>&amp;Close page</source>
        <translation>Seite s&amp;chließen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Numbers</source>
        <translation>&amp;Zahlen</translation>
    </message>
    <message>
        <source>Sensors side &amp;by side</source>
        <translation>Sensoren &amp;nebeneinander</translation>
    </message>
    <message>
        <source>Next page</source>
        <translation>Nächste Seite</translation>
    </message>
    <message>
        <source>Previous page</source>
        <translation>Vorige Seite</translation>
    </message>
    <message>
        <source>&amp;Colours</source>
        <translation>&amp;Farben</translation>
    </message>
    <message>
        <source>As the system</source>
        <translation>Wie das System</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Open &amp;again</source>
        <translation>&amp;Erneut öffnen</translation>
    </message>
    <message>
        <source>&amp;Undo setting:</source>
        <translation>Einstellung &amp;rückgängig:</translation>
    </message>
    <message>
        <source>R&amp;epeat setting:</source>
        <translation>Einstellung &amp;wiederholen:</translation>
    </message>
    <message>
        <source>&amp;Copy values</source>
        <translation>Werte &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Zero here</source>
        <translation>Hier &amp;null</translation>
    </message>
    <message>
        <source>&amp;Without zero</source>
        <translation>&amp;Ohne Nullpunkt</translation>
    </message>
    <message>
        <source>&amp;Reset minimum and maximum</source>
        <translation>Minimum und Maximum z&amp;urücksetzen</translation>
    </message>
    <message>
        <source>&amp;Keyboard</source>
        <translation>&amp;Tastatur</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>Ü&amp;ber</translation>
    </message>
    <message>
        <source>Keyboard</source>
        <translation>Tastatur</translation>
    </message>
    <message>
        <source>not known</source>
        <translation>nicht bekannt</translation>
    </message>
    <message>
        <source>It is the bench simulator: the values are not measurements.</source>
        <translation>Es ist der Prüfstandssimulator: Die Werte sind keine Messwerte.</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message>
        <source>Sensor-access library: %1
%2
Qt %3</source>
        <translation>Sensorbibliothek: %1
%2
Qt %3</translation>
    </message>
    <message>
        <source>%1 refused: %2</source>
        <translation>%1 abgelehnt: %2</translation>
    </message>
    <message>
        <source>set %1</source>
        <translation>%1 setzen</translation>
    </message>
    <message>
        <source>In the plot: zoom the time</source>
        <translation>Im Diagramm: Zeit vergrößern und verkleinern</translation>
    </message>
    <message>
        <source>Left, Right</source>
        <translation>Links, Rechts</translation>
    </message>
    <message>
        <source>In the plot: move the window</source>
        <translation>Im Diagramm: Ausschnitt verschieben</translation>
    </message>
    <message>
        <source>Up, Down</source>
        <translation>Auf, Ab</translation>
    </message>
    <message>
        <source>In the plot: move the values, with Ctrl zoom them</source>
        <translation>Im Diagramm: Werte verschieben, mit Strg vergrößern</translation>
    </message>
    <message>
        <source>Home, End</source>
        <translation>Pos1, Ende</translation>
    </message>
    <message>
        <source>In the plot: the first values, the newest values</source>
        <translation>Im Diagramm: die ersten Werte, die neuesten Werte</translation>
    </message>
    <message>
        <source>In the plot: show everything</source>
        <translation>Im Diagramm: alles zeigen</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>In the plot: pause; on a number: its limits</source>
        <translation>Im Diagramm: Pause; auf einer Zahl: ihre Grenzen</translation>
    </message>
    <message>
        <source>opening</source>
        <translation>wird geöffnet</translation>
    </message>
    <message>
        <source>The page was closed; the export to %1 goes on.</source>
        <translation>Die Seite wurde geschlossen; der Export nach %1 läuft weiter.</translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation>Exportiert nach %1</translation>
    </message>
    <message>
        <source>The export to %1 has failed: %2</source>
        <translation>Der Export nach %1 ist fehlgeschlagen: %2</translation>
    </message>
    <message>
        <source>Files are still being written. The program ends as soon as they are complete.</source>
        <translation>Es werden noch Dateien geschrieben. Das Programm endet, sobald sie vollständig sind.</translation>
    </message>
    <message>
        <source>End without them</source>
        <translation>Ohne sie beenden</translation>
    </message>
    <message>
        <source>Wait</source>
        <translation>Warten</translation>
    </message>
    <message>
        <source>The memory is not enough for the whole recording: of %1 frames only the last %2 are shown.</source>
        <translation>Der Speicher reicht nicht für die ganze Aufzeichnung: von %1 Datensätzen werden nur die letzten %2 gezeigt.</translation>
    </message>
</context>
<context>
    <name>Explorer::NumberTile</name>
    <message>
        <source>zero at %1</source>
        <translation>Null bei %1</translation>
    </message>
    <message>
        <source>Limits, zero and reset of %1</source>
        <translation>Grenzen, Nullpunkt und Rücksetzen von %1</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Lower limit</source>
        <translation>Untere Grenze</translation>
    </message>
    <message>
        <source>Upper limit</source>
        <translation>Obere Grenze</translation>
    </message>
    <message>
        <source>Zero at</source>
        <translation>Null bei</translation>
    </message>
    <message>
        <source>Zero here</source>
        <translation>Hier null</translation>
    </message>
    <message>
        <source>Reset minimum and maximum</source>
        <translation>Minimum und Maximum zurücksetzen</translation>
    </message>
    <message>
        <source>Copy value</source>
        <translation>Wert kopieren</translation>
    </message>
    <message>
        <source>▼ below the limit</source>
        <translation>▼ unter der Grenze</translation>
    </message>
    <message>
        <source>▲ above the limit</source>
        <translation>▲ über der Grenze</translation>
    </message>
    <message>
        <source>✓ within the limits</source>
        <translation>✓ innerhalb der Grenzen</translation>
    </message>
    <message>
        <source>min %1</source>
        <translation>min %1</translation>
    </message>
    <message>
        <source>max %1</source>
        <translation>max %1</translation>
    </message>
    <message>
        <source>%1 errors</source>
        <translation>%1 Fehler</translation>
    </message>
</context>
<context>
    <name>Explorer::NumbersView</name>
    <message>
        <source>Present values</source>
        <translation>Aktuelle Werte</translation>
    </message>
    <message>
        <source>Copy values</source>
        <translation>Werte kopieren</translation>
    </message>
    <message>
        <source>Zero here</source>
        <translation>Hier null</translation>
    </message>
    <message>
        <source>Without zero</source>
        <translation>Ohne Nullpunkt</translation>
    </message>
    <message>
        <source>Reset minimum and maximum</source>
        <translation>Minimum und Maximum zurücksetzen</translation>
    </message>
</context>
<context>
    <name>Explorer::ParameterFile</name>
    <message>
        <source>&apos;%1&apos; has no settings</source>
        <translation>„%1“ hat keine Einstellungen</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is neither a number nor a text</source>
        <translation>„%1“ ist weder eine Zahl noch ein Text</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>Zeile %1: %2</translation>
    </message>
    <message>
        <source>it is not a file with settings of a sensor</source>
        <translation>es ist keine Datei mit Einstellungen eines Sensors</translation>
    </message>
    <message>
        <source>it was written by a newer version of this program</source>
        <translation>sie stammt von einer neueren Version dieses Programms</translation>
    </message>
    <message>
        <source>it has no settings</source>
        <translation>sie hat keine Einstellungen</translation>
    </message>
    <message>
        <source>&apos;%1&apos; cannot be written: %2</source>
        <translation>„%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>&apos;%1&apos; cannot be loaded: %2</source>
        <translation>„%1“ kann nicht geladen werden: %2</translation>
    </message>
</context>
<context>
    <name>Explorer::ParameterModel</name>
    <message>
        <source>%1 (sensor %2)</source>
        <translation>%1 (Sensor %2)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>sending ...</source>
        <translation>wird gesendet ...</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Einstellung</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>as found</source>
        <translation>wie vorgefunden</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a whole number</source>
        <translation>„%1“ ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a number</source>
        <translation>„%1“ ist keine Zahl</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has characters that cannot be sent to a sensor</source>
        <translation>„%1“ hat Zeichen, die nicht an einen Sensor gesendet werden können</translation>
    </message>
    <message>
        <source>the sensor has no group of settings &apos;%1&apos;</source>
        <translation>der Sensor hat keine Gruppe von Einstellungen „%1“</translation>
    </message>
    <message>
        <source>the sensor has no setting &apos;%1&apos; in &apos;%2&apos;</source>
        <translation>der Sensor hat keine Einstellung „%1“ in „%2“</translation>
    </message>
    <message>
        <source>not sent: the sensor is not open</source>
        <translation>nicht gesendet: der Sensor ist nicht offen</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>Why a change was refused, or how a setting was when the sensor was opened. There is no command for factory settings that all sensors have: to compare with these, save those of a new sensor into a file and compare with the file.</source>
        <translation>Warum eine Änderung abgelehnt wurde, oder wie eine Einstellung war, als der Sensor geöffnet wurde. Es gibt keinen Befehl für Werkseinstellungen, den alle Sensoren haben: Um mit diesen zu vergleichen, speichern Sie die eines neuen Sensors in eine Datei und vergleichen Sie mit der Datei.</translation>
    </message>
</context>
<context>
    <name>Explorer::ParameterPanel</name>
    <message>
        <source>Ask the sensor for known settings</source>
        <translation>Den Sensor nach bekannten Einstellungen fragen</translation>
    </message>
    <message>
        <source>Settings of the sensor</source>
        <translation>Einstellungen des Sensors</translation>
    </message>
    <message>
        <source>Read all settings from the sensor again</source>
        <translation>Alle Einstellungen erneut vom Sensor lesen</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Undo the last change of a setting</source>
        <translation>Die letzte Änderung einer Einstellung rückgängig machen</translation>
    </message>
    <message>
        <source>Repeat the change that was undone</source>
        <translation>Die rückgängig gemachte Änderung wiederholen</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Save, load and compare settings</source>
        <translation>Einstellungen speichern, laden und vergleichen</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Show only settings with this text</source>
        <translation>Nur Einstellungen mit diesem Text zeigen</translation>
    </message>
    <message>
        <source>Command to send to the sensor</source>
        <translation>Befehl an den Sensor</translation>
    </message>
    <message>
        <source>Any command, with its parameters as NAME=VALUE. The answer appears in the log.</source>
        <translation>Beliebiger Befehl mit seinen Parametern als NAME=WERT. Die Antwort erscheint im Protokoll.</translation>
    </message>
    <message>
        <source>&amp;Command</source>
        <translation>&amp;Befehl</translation>
    </message>
    <message>
        <source>Save settings ...</source>
        <translation>Einstellungen speichern ...</translation>
    </message>
    <message>
        <source>Load settings ...</source>
        <translation>Einstellungen laden ...</translation>
    </message>
    <message>
        <source>Compare with file ...</source>
        <translation>Mit Datei vergleichen ...</translation>
    </message>
    <message>
        <source>Compare with the settings as found</source>
        <translation>Mit den vorgefundenen Einstellungen vergleichen</translation>
    </message>
    <message>
        <source>Settings (*.json);;All files (*)</source>
        <translation>Einstellungen (*.json);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Save settings</source>
        <translation>Einstellungen speichern</translation>
    </message>
    <message>
        <source>Open settings</source>
        <translation>Einstellungen öffnen</translation>
    </message>
    <message>
        <source>%1 refused: %2</source>
        <translation>%1 abgelehnt: %2</translation>
    </message>
    <message>
        <source>Set: %1</source>
        <translation>Gesetzt: %1</translation>
    </message>
    <message>
        <source>Saved as &apos;%1&apos;.</source>
        <translation>Gespeichert als „%1“.</translation>
    </message>
    <message>
        <source>settings of &apos;%1&apos;</source>
        <translation>Einstellungen von „%1“</translation>
    </message>
    <message>
        <source>&apos;%1&apos; does not fit: %2. Nothing was changed.</source>
        <translation>„%1“ passt nicht: %2. Nichts wurde geändert.</translation>
    </message>
    <message>
        <source>The settings that differ are bold.</source>
        <translation>Abweichende Einstellungen sind fett.</translation>
    </message>
    <message>
        <source>All settings are those of the file.</source>
        <translation>Alle Einstellungen sind die der Datei.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a command, such as Get_Info</source>
        <translation>„%1“ ist kein Befehl wie Get_Info</translation>
    </message>
    <message>
        <source>done</source>
        <translation>ausgeführt</translation>
    </message>
    <message>
        <source>%1: error %2: %3</source>
        <translation>%1: Fehler %2: %3</translation>
    </message>
    <message>
        <source>No sensor is open. Here you will see its settings, change them in place, undo changes, and compare them with those of a file.</source>
        <translation>Kein Sensor ist offen. Hier sehen Sie seine Einstellungen, ändern sie an Ort und Stelle, nehmen Änderungen zurück und vergleichen sie mit denen einer Datei.</translation>
    </message>
    <message>
        <source>Saving &apos;%1&apos;...</source>
        <translation>„%1“ wird gespeichert ...</translation>
    </message>
    <message>
        <source>Reading &apos;%1&apos;...</source>
        <translation>„%1“ wird gelesen ...</translation>
    </message>
    <message>
        <source>&apos;%1&apos; was not used: another sensor was chosen while it was read.</source>
        <translation>„%1“ wurde nicht verwendet: Während des Lesens wurde ein anderer Sensor gewählt.</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has the settings of a %2, this sensor is a %3.</source>
        <translation>„%1“ hat die Einstellungen eines %2, dieser Sensor ist ein %3.</translation>
    </message>
    <message>
        <source>%1 Nothing was changed.</source>
        <translation>%1 Nichts wurde geändert.</translation>
    </message>
    <message>
        <source>The settings that both have are the same.</source>
        <translation>Die Einstellungen, die beide haben, sind gleich.</translation>
    </message>
    <message>
        <source>Only in the file: %1</source>
        <translation>Nur in der Datei: %1</translation>
    </message>
    <message>
        <source>Not in the file: %1</source>
        <translation>Nicht in der Datei: %1</translation>
    </message>
</context>
<context>
    <name>Explorer::Parameters</name>
    <message>
        <source>Sample rate</source>
        <translation>Messrate</translation>
    </message>
    <message>
        <source>Sample time</source>
        <translation>Messzeit</translation>
    </message>
    <message>
        <source>Measuring frequency</source>
        <translation>Messfrequenz</translation>
    </message>
    <message>
        <source>Averaged values</source>
        <translation>Gemittelte Werte</translation>
    </message>
    <message>
        <source>Averaging type</source>
        <translation>Art der Mittelung</translation>
    </message>
    <message>
        <source>Sample rate number</source>
        <translation>Nummer der Messrate</translation>
    </message>
    <message>
        <source>Trigger mode</source>
        <translation>Triggermodus</translation>
    </message>
    <message>
        <source>Synchronisation and trigger</source>
        <translation>Synchronisation und Trigger</translation>
    </message>
    <message>
        <source>Synchronisation</source>
        <translation>Synchronisation</translation>
    </message>
    <message>
        <source>Measuring mode</source>
        <translation>Messmodus</translation>
    </message>
    <message>
        <source>RS422 output</source>
        <translation>RS422-Ausgang</translation>
    </message>
    <message>
        <source>Analogue output</source>
        <translation>Analogausgang</translation>
    </message>
    <message>
        <source>Error output 1</source>
        <translation>Fehlerausgang 1</translation>
    </message>
    <message>
        <source>Error output 2</source>
        <translation>Fehlerausgang 2</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Ausgänge</translation>
    </message>
    <message>
        <source>Trigger</source>
        <translation>Trigger</translation>
    </message>
    <message>
        <source>Video output (Ethernet)</source>
        <translation>Videoausgabe (Ethernet)</translation>
    </message>
    <message>
        <source>Video output (RS422)</source>
        <translation>Videoausgabe (RS422)</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>on</source>
        <translation>ein</translation>
    </message>
    <message>
        <source>SensorType</source>
        <translation>Sensortyp</translation>
    </message>
    <message>
        <source>Interface</source>
        <translation>Schnittstelle</translation>
    </message>
    <message>
        <source>Baudrate</source>
        <translation>Baudrate</translation>
    </message>
    <message>
        <source>Stopbits</source>
        <translation>Stoppbits</translation>
    </message>
    <message>
        <source>Parity</source>
        <translation>Parität</translation>
    </message>
    <message>
        <source>Byte Size</source>
        <translation>Datenbits</translation>
    </message>
    <message>
        <source>Card Instance</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Device Instance</source>
        <translation>Gerät</translation>
    </message>
    <message>
        <source>Serial Number (Interface)</source>
        <translation>Seriennummer (Schnittstelle)</translation>
    </message>
    <message>
        <source>Serial Number (Controller)</source>
        <translation>Seriennummer (Controller)</translation>
    </message>
    <message>
        <source>Port Number</source>
        <translation>Portnummer</translation>
    </message>
    <message>
        <source>Channel Number</source>
        <translation>Kanalnummer</translation>
    </message>
    <message>
        <source>MAC Address</source>
        <translation>MAC-Adresse</translation>
    </message>
    <message>
        <source>IP Address</source>
        <translation>IP-Adresse</translation>
    </message>
    <message>
        <source>Subnet Mask</source>
        <translation>Subnetzmaske</translation>
    </message>
    <message>
        <source>Host Name</source>
        <translation>Rechnername</translation>
    </message>
    <message>
        <source>Software Version</source>
        <translation>Softwareversion</translation>
    </message>
    <message>
        <source>Sensor Address</source>
        <translation>Sensoradresse</translation>
    </message>
    <message>
        <source>Network Adapter</source>
        <translation>Netzwerkadapter</translation>
    </message>
    <message>
        <source>Sensor type</source>
        <translation>Sensortyp</translation>
    </message>
    <message>
        <source>Laser power</source>
        <translation>Laserleistung</translation>
    </message>
    <message>
        <source>Sensor name</source>
        <translation>Name des Sensors</translation>
    </message>
    <message>
        <source>Trigger source</source>
        <translation>Triggerquelle</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Geschwindigkeit</translation>
    </message>
    <message>
        <source>Output mode</source>
        <translation>Ausgabemodus</translation>
    </message>
    <message>
        <source>Start of measuring</source>
        <translation>Beginn der Messung</translation>
    </message>
    <message>
        <source>Measuring time</source>
        <translation>Messzeit</translation>
    </message>
    <message>
        <source>Termination of the synchronisation line</source>
        <translation>Abschluss der Synchronisationsleitung</translation>
    </message>
    <message>
        <source>Raw video line</source>
        <translation>Videozeile, roh</translation>
    </message>
    <message>
        <source>Corrected video line</source>
        <translation>Videozeile, korrigiert</translation>
    </message>
    <message>
        <source>Dark reference line</source>
        <translation>Dunkelreferenz</translation>
    </message>
    <message>
        <source>Light reference line</source>
        <translation>Hellreferenz</translation>
    </message>
    <message>
        <source>Dark reference table</source>
        <translation>Tabelle der Dunkelreferenz</translation>
    </message>
    <message>
        <source>Light reference table</source>
        <translation>Tabelle der Hellreferenz</translation>
    </message>
    <message>
        <source>Averaging</source>
        <translation>Mittelung</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>Explorer::PlotCursors</name>
    <message>
        <source>A: %1   B: %2</source>
        <translation>A: %1   B: %2</translation>
    </message>
    <message>
        <source>B − A: %1 frames</source>
        <translation>B − A: %1 Datensätze</translation>
    </message>
    <message>
        <source>Δt: %1 s</source>
        <translation>Δt: %1 s</translation>
    </message>
    <message>
        <source>1/Δt: %1 Hz</source>
        <translation>1/Δt: %1 Hz</translation>
    </message>
</context>
<context>
    <name>Explorer::PlotPicture</name>
    <message>
        <source>cannot write &apos;%1&apos;: %2</source>
        <translation>„%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>the picture is too large</source>
        <translation>das Bild ist zu groß</translation>
    </message>
</context>
<context>
    <name>Explorer::PlotView</name>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Spectrum</source>
        <translation>Spektrum</translation>
    </message>
    <message>
        <source>Plot of the measured values</source>
        <translation>Diagramm der Messwerte</translation>
    </message>
    <message>
        <source>Cursors</source>
        <translation>Cursor</translation>
    </message>
    <message>
        <source>No values yet</source>
        <translation>Noch keine Werte</translation>
    </message>
    <message>
        <source>No values in this range. Press 0 to show everything.</source>
        <translation>Keine Werte in diesem Bereich. Die Taste 0 zeigt alles.</translation>
    </message>
    <message>
        <source>%1 frames</source>
        <translation>%1 Datensätze</translation>
    </message>
    <message>
        <source>%1 frames per second</source>
        <translation>%1 Datensätze pro Sekunde</translation>
    </message>
    <message>
        <source>%1 missing</source>
        <translation>%1 fehlen</translation>
    </message>
    <message>
        <source>No values</source>
        <translation>Keine Werte</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>A sample of %1 of %2 values</source>
        <translation>Eine Stichprobe von %1 aus %2 Werten</translation>
    </message>
    <message>
        <source>%1 values</source>
        <translation>%1 Werte</translation>
    </message>
    <message>
        <source>No spectrum: the time between the values is not known</source>
        <translation>Kein Spektrum: Der zeitliche Abstand der Werte ist nicht bekannt</translation>
    </message>
    <message>
        <source>No spectrum: too few values</source>
        <translation>Kein Spektrum: zu wenige Werte</translation>
    </message>
    <message>
        <source>No spectrum: values are missing in this range</source>
        <translation>Kein Spektrum: In diesem Bereich fehlen Werte</translation>
    </message>
    <message>
        <source>No spectrum: there are error values in this range</source>
        <translation>Kein Spektrum: In diesem Bereich sind Fehlerwerte</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1 values, %2 Hz per line</source>
        <translation>%1 Werte, %2 Hz je Linie</translation>
    </message>
    <message>
        <source>Frequency in Hz</source>
        <translation>Frequenz in Hz</translation>
    </message>
    <message>
        <source>Amplitude</source>
        <translation>Amplitude</translation>
    </message>
    <message>
        <source>Follow</source>
        <translation>Folgen</translation>
    </message>
    <message>
        <source>Move with the newest values (End)</source>
        <translation>Mit den neuesten Werten mitlaufen (Ende)</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Stop drawing; the sensor goes on measuring (Space)</source>
        <translation>Nicht weiterzeichnen; der Sensor misst weiter (Leertaste)</translation>
    </message>
    <message>
        <source>Two lines with the difference between them</source>
        <translation>Zwei Linien und der Unterschied zwischen ihnen</translation>
    </message>
    <message>
        <source>Crosshair</source>
        <translation>Fadenkreuz</translation>
    </message>
    <message>
        <source>The values at the pointer</source>
        <translation>Die Werte am Mauszeiger</translation>
    </message>
    <message>
        <source>Show all</source>
        <translation>Alles zeigen</translation>
    </message>
    <message>
        <source>Show everything that is kept (0)</source>
        <translation>Alles zeigen, was aufbewahrt ist (0)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Show a shorter time (+)</source>
        <translation>Eine kürzere Zeit zeigen (+)</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Show a longer time (-)</source>
        <translation>Eine längere Zeit zeigen (-)</translation>
    </message>
    <message>
        <source>Time of day</source>
        <translation>Uhrzeit</translation>
    </message>
    <message>
        <source>Write times as the time of day instead of seconds</source>
        <translation>Zeiten als Uhrzeit statt in Sekunden schreiben</translation>
    </message>
    <message>
        <source>Statistics</source>
        <translation>Statistik</translation>
    </message>
    <message>
        <source>Mean, deviation and extremes of what is visible</source>
        <translation>Mittelwert, Streuung und Extremwerte des Sichtbaren</translation>
    </message>
    <message>
        <source>How often the visible values occur</source>
        <translation>Wie oft die sichtbaren Werte vorkommen</translation>
    </message>
    <message>
        <source>The frequencies in the visible values</source>
        <translation>Die Frequenzen in den sichtbaren Werten</translation>
    </message>
    <message>
        <source>The export has ended: other values are shown.</source>
        <translation>Der Export ist beendet: Es werden andere Werte gezeigt.</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>Save the visible range as a table or a picture</source>
        <translation>Den sichtbaren Bereich als Tabelle oder Bild speichern</translation>
    </message>
    <message>
        <source>Visible range...</source>
        <translation>Sichtbarer Bereich...</translation>
    </message>
    <message>
        <source>Everything that is kept...</source>
        <translation>Alles, was aufbewahrt ist...</translation>
    </message>
    <message>
        <source>The export was cancelled.</source>
        <translation>Der Export wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Table (*.csv)</source>
        <translation>Tabelle (*.csv)</translation>
    </message>
    <message>
        <source>NumPy array (*.npy)</source>
        <translation>NumPy-Array (*.npy)</translation>
    </message>
    <message>
        <source>Table in JSON lines (*.jsonl)</source>
        <translation>Tabelle in JSON-Zeilen (*.jsonl)</translation>
    </message>
    <message>
        <source>Picture (*.%1)</source>
        <translation>Bild (*.%1)</translation>
    </message>
    <message>
        <source>there are no values to export</source>
        <translation>es gibt keine Werte zu exportieren</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has none of the endings csv, npy, jsonl, %2</source>
        <translation>„%1“ hat keine der Endungen csv, npy, jsonl, %2</translation>
    </message>
    <message>
        <source>Exporting to %1</source>
        <translation>Export nach %1 läuft</translation>
    </message>
    <message>
        <source>Exported to %1</source>
        <translation>Exportiert nach %1</translation>
    </message>
    <message>
        <source>%1 of the oldest frames had been dropped before they were written.</source>
        <translation>%1 der ältesten Datensätze waren verworfen, bevor sie geschrieben wurden.</translation>
    </message>
</context>
<context>
    <name>Explorer::RecordingControl</name>
    <message>
        <source>The sensor is being recorded already.</source>
        <translation>Der Sensor wird schon aufgezeichnet.</translation>
    </message>
    <message>
        <source>The suffix of &apos;%1&apos; is no format; the formats are .csv, .jsonl and .npy.</source>
        <translation>Die Endung von „%1“ ist kein Format; die Formate sind .csv, .jsonl und .npy.</translation>
    </message>
    <message>
        <source>The sensor has not yet described its values.</source>
        <translation>Der Sensor hat seine Werte noch nicht beschrieben.</translation>
    </message>
    <message>
        <source>The disk is too slow for the values of the sensor.</source>
        <translation>Der Datenträger ist zu langsam für die Werte des Sensors.</translation>
    </message>
    <message>
        <source>The sensor sends other values now.</source>
        <translation>Der Sensor sendet jetzt andere Werte.</translation>
    </message>
</context>
<context>
    <name>Explorer::RecordingWidget</name>
    <message>
        <source>Record</source>
        <translation>Aufzeichnen</translation>
    </message>
    <message>
        <source>Record the values of the sensor into a file</source>
        <translation>Die Werte des Sensors in eine Datei aufzeichnen</translation>
    </message>
    <message>
        <source>State of the recording</source>
        <translation>Stand der Aufzeichnung</translation>
    </message>
    <message>
        <source>Record to</source>
        <translation>Aufzeichnen nach</translation>
    </message>
    <message>
        <source>CSV (*.csv)</source>
        <translation>CSV (*.csv)</translation>
    </message>
    <message>
        <source>NumPy array (*.npy)</source>
        <translation>NumPy-Array (*.npy)</translation>
    </message>
    <message>
        <source>JSON lines (*.jsonl)</source>
        <translation>JSON-Zeilen (*.jsonl)</translation>
    </message>
    <message>
        <source>recording into %1</source>
        <translation>Aufzeichnung nach %1 läuft</translation>
    </message>
    <message>
        <source>recorded into %1</source>
        <translation>aufgezeichnet nach %1</translation>
    </message>
    <message>
        <source>%1 What was recorded is in %2.</source>
        <translation>%1 Das Aufgezeichnete ist in %2.</translation>
    </message>
    <message>
        <source>recorded: %1</source>
        <translation>aufgezeichnet: %1</translation>
    </message>
    <message>
        <source>not recorded</source>
        <translation>nicht aufgezeichnet</translation>
    </message>
    <message>
        <source>recording ended: see the log</source>
        <translation>Aufzeichnung beendet: siehe Protokoll</translation>
    </message>
    <message>
        <source>Record to ...</source>
        <translation>Aufzeichnen nach ...</translation>
    </message>
</context>
<context>
    <name>Explorer::SensorListModel</name>
    <message>
        <source>%1 at %2, %3</source>
        <translation>%1 an %2, %3</translation>
    </message>
    <message>
        <source>open</source>
        <translation>offen</translation>
    </message>
    <message>
        <source>found</source>
        <translation>gefunden</translation>
    </message>
    <message>
        <source>remembered, not searched yet</source>
        <translation>gemerkt, noch nicht gesucht</translation>
    </message>
</context>
<context>
    <name>Explorer::SensorPage</name>
    <message>
        <source>Open again</source>
        <translation>Erneut öffnen</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>Signal</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>Range</source>
        <translation>Bereich</translation>
    </message>
    <message>
        <source>Signals of the sensor</source>
        <translation>Signale des Sensors</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Serial number</source>
        <translation>Seriennummer</translation>
    </message>
    <message>
        <source>Article number</source>
        <translation>Artikelnummer</translation>
    </message>
    <message>
        <source>Firmware</source>
        <translation>Firmware</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Anschluss</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>The sensor has not described its values yet.</source>
        <translation>Der Sensor hat seine Werte noch nicht beschrieben.</translation>
    </message>
    <message>
        <source>Values per frame: %1. Frames: %2.</source>
        <translation>Werte je Datensatz: %1. Datensätze: %2.</translation>
    </message>
    <message>
        <source>rate not reported</source>
        <translation>Rate nicht gemeldet</translation>
    </message>
    <message>
        <source>For how long values are kept</source>
        <translation>Wie lange Werte behalten werden</translation>
    </message>
    <message>
        <source>The memory that the values of this sensor need at most. Older values are dropped.</source>
        <translation>Der Speicher, den die Werte dieses Sensors höchstens brauchen. Ältere Werte werden verworfen.</translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation>1 Minute</translation>
    </message>
    <message>
        <source>10 minutes</source>
        <translation>10 Minuten</translation>
    </message>
    <message>
        <source>1 hour</source>
        <translation>1 Stunde</translation>
    </message>
    <message>
        <source>8 hours</source>
        <translation>8 Stunden</translation>
    </message>
    <message>
        <source>1 day</source>
        <translation>1 Tag</translation>
    </message>
    <message>
        <source>Values kept</source>
        <translation>Werte behalten</translation>
    </message>
    <message>
        <source>at most %1</source>
        <translation>höchstens %1</translation>
    </message>
    <message>
        <source>Sensor %1</source>
        <translation>Sensor %1</translation>
    </message>
    <message>
        <source>No sensor is open. Here you will see what it is, how it is connected, and what it sends.</source>
        <translation>Kein Sensor ist offen. Hier sehen Sie, was er ist, wie er angeschlossen ist und was er sendet.</translation>
    </message>
    <message>
        <source>%1:
only about %2</source>
        <comment>memory, duration</comment>
        <translation>%1:
nur etwa %2</translation>
    </message>
</context>
<context>
    <name>Explorer::SensorSession</name>
    <message>
        <source>stopped</source>
        <translation>angehalten</translation>
    </message>
    <message>
        <source>opening</source>
        <translation>wird geöffnet</translation>
    </message>
    <message>
        <source>reading</source>
        <translation>liest</translation>
    </message>
    <message>
        <source>waiting for a trigger</source>
        <translation>wartet auf Trigger</translation>
    </message>
    <message>
        <source>reconnecting</source>
        <translation>verbindet neu</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>%1. The explorer tries to open the sensor again; check cable and power supply.</source>
        <translation>%1. Der Explorer versucht, den Sensor wieder zu öffnen; prüfen Sie Kabel und Stromversorgung.</translation>
    </message>
    <message>
        <source>%1. Check cable, power supply and address, then open the sensor again.</source>
        <translation>%1. Prüfen Sie Kabel, Stromversorgung und Adresse und öffnen Sie den Sensor dann erneut.</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>%1 (error %2)</source>
        <translation>%1 (Fehler %2)</translation>
    </message>
    <message>
        <source>The memory for values is full: the oldest ones are dropped although they are to be kept for %1 s. Keep them for a shorter time, or record them.</source>
        <translation>Der Speicher für Werte ist voll: die ältesten werden verworfen, obwohl sie %1 s lang behalten werden sollen. Behalten Sie sie kürzer, oder zeichnen Sie sie auf.</translation>
    </message>
</context>
<context>
    <name>Explorer::SessionArea</name>
    <message>
        <source>Open sensors</source>
        <translation>Offene Sensoren</translation>
    </message>
    <message>
        <source>Close this page</source>
        <translation>Diese Seite schließen</translation>
    </message>
</context>
<context>
    <name>Explorer::SessionView</name>
    <message>
        <source>Open again</source>
        <translation>Erneut öffnen</translation>
    </message>
    <message>
        <source>Plot</source>
        <translation>Diagramm</translation>
    </message>
    <message>
        <source>Time and losses</source>
        <translation>Zeit und Verluste</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>Further actions of the plot</source>
        <translation>Weitere Aktionen des Diagramms</translation>
    </message>
    <message>
        <source>No frame is missing.</source>
        <translation>Kein Datensatz fehlt.</translation>
    </message>
    <message>
        <source>no values for %1 s</source>
        <translation>seit %1 s keine Werte</translation>
    </message>
    <message>
        <source>⚠ Simulated: these values come from the bench simulator and are not measurements.</source>
        <translation>⚠ Simuliert: Werte des Prüfstandssimulators, keine Messwerte.</translation>
    </message>
    <message>
        <source>⚠ Simulated values</source>
        <translation>⚠ Simulierte Werte</translation>
    </message>
</context>
<context>
    <name>Explorer::SignalLegend</name>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>%1 [%2]</source>
        <translation>%1 [%2]</translation>
    </message>
    <message>
        <source>%1, right axis</source>
        <translation>%1, rechte Achse</translation>
    </message>
    <message>
        <source>Hide %1</source>
        <translation>%1 ausblenden</translation>
    </message>
    <message>
        <source>Show %1</source>
        <translation>%1 einblenden</translation>
    </message>
</context>
<context>
    <name>Explorer::StatisticsModel</name>
    <message>
        <source>Signal</source>
        <translation>Signal</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Mittelwert</translation>
    </message>
    <message>
        <source>Std. deviation</source>
        <translation>Std.-Abweichung</translation>
    </message>
    <message>
        <source>Peak to peak</source>
        <translation>Spitze-Spitze</translation>
    </message>
    <message>
        <source>Minimum</source>
        <translation>Minimum</translation>
    </message>
    <message>
        <source>Maximum</source>
        <translation>Maximum</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>Errors</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>At A</source>
        <translation>Bei A</translation>
    </message>
    <message>
        <source>At B</source>
        <translation>Bei B</translation>
    </message>
    <message>
        <source>B − A</source>
        <translation>B − A</translation>
    </message>
</context>
<context>
    <name>Explorer::StatisticsPanel</name>
    <message>
        <source>Statistics of the visible range</source>
        <translation>Statistik des sichtbaren Bereichs</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>Explorer::TimePlot</name>
    <message>
        <source>Measured values over time</source>
        <translation>Messwerte über der Zeit</translation>
    </message>
    <message>
        <source>Plot</source>
        <translation>Diagramm</translation>
    </message>
    <message>
        <source>Frame</source>
        <translation>Datensatz</translation>
    </message>
    <message>
        <source>Time of day</source>
        <translation>Uhrzeit</translation>
    </message>
    <message>
        <source>Time in s</source>
        <translation>Zeit in s</translation>
    </message>
    <message>
        <source>Signal %1</source>
        <translation>Signal %1</translation>
    </message>
    <message>
        <source>no value</source>
        <translation>kein Wert</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>%1: %2 (%3 values)</source>
        <translation>%1: %2 (%3 Werte)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Frame %1</source>
        <translation>Datensatz %1</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
</context>
<context>
    <name>Explorer::TunnelWorker</name>
    <message>
        <source>the sensor-access library does not support the model</source>
        <translation>die Sensorbibliothek unterstützt das Modell nicht</translation>
    </message>
    <message>
        <source>there is no free TCP port on this computer</source>
        <translation>auf diesem Rechner ist kein TCP-Port frei</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
</context>
<context>
    <name>Explorer::VideoView</name>
    <message>
        <source>Live</source>
        <translation>Live</translation>
    </message>
    <message>
        <source>Video mode</source>
        <translation>Videomodus</translation>
    </message>
    <message>
        <source>Show new lines while this is on</source>
        <translation>Solange dies ein ist, neue Zeilen zeigen</translation>
    </message>
    <message>
        <source>Switch the sensor to a mode in which it sends video; some models then send no measured values</source>
        <translation>Den Sensor in einen Modus schalten, in dem er Video sendet; manche Modelle senden dann keine Messwerte</translation>
    </message>
    <message>
        <source>Video line</source>
        <translation>Videozeile</translation>
    </message>
    <message>
        <source>Pixel</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source>Intensity</source>
        <translation>Intensität</translation>
    </message>
    <message>
        <source>The sensor refuses: %1</source>
        <translation>Der Sensor lehnt ab: %1</translation>
    </message>
    <message>
        <source>The sensor is not being read.</source>
        <translation>Der Sensor wird nicht gelesen.</translation>
    </message>
    <message>
        <source>No video: %1</source>
        <translation>Kein Video: %1</translation>
    </message>
    <message>
        <source>The sensor is being asked for its video signals.</source>
        <translation>Der Sensor wird nach seinen Videosignalen gefragt.</translation>
    </message>
    <message>
        <source>This sensor has no video.</source>
        <translation>Dieser Sensor hat kein Video.</translation>
    </message>
    <message>
        <source>Video is not available over this interface.</source>
        <translation>Über diese Schnittstelle ist kein Video verfügbar.</translation>
    </message>
    <message>
        <source>The sensor is not in a mode in which it sends video. Switch the video mode on.</source>
        <translation>Der Sensor ist in keinem Modus, in dem er Video sendet. Schalten Sie den Videomodus ein.</translation>
    </message>
    <message>
        <source>No video signal is switched on. Choose one above.</source>
        <translation>Kein Videosignal ist eingeschaltet. Wählen Sie oben eines.</translation>
    </message>
    <message>
        <source>Threshold %1</source>
        <translation>Schwelle %1</translation>
    </message>
</context>
<context>
    <name>Explorer::WebTunnel</name>
    <message>
        <source>&amp;Web interface</source>
        <translation>&amp;Weboberfläche</translation>
    </message>
    <message>
        <source>Show the web interface of the sensor in the browser; reading pauses meanwhile</source>
        <translation>Die Weboberfläche des Sensors im Browser zeigen; das Lesen pausiert solange</translation>
    </message>
    <message>
        <source>web interface: the sensor is lost; the next page tries to open it</source>
        <translation>Weboberfläche: Der Sensor ist verloren; die nächste Seite versucht ihn zu öffnen</translation>
    </message>
    <message>
        <source>web interface: the sensor is open</source>
        <translation>Weboberfläche: Der Sensor ist offen</translation>
    </message>
    <message>
        <source>web interface is being opened</source>
        <translation>Weboberfläche wird geöffnet</translation>
    </message>
    <message>
        <source>web interface at %1; reading pauses</source>
        <translation>Weboberfläche unter %1; das Lesen pausiert</translation>
    </message>
    <message>
        <source>web interface is being closed</source>
        <translation>Weboberfläche wird geschlossen</translation>
    </message>
    <message>
        <source>no browser could be started; open the address yourself: %1</source>
        <translation>Es konnte kein Browser gestartet werden; öffnen Sie die Adresse selbst: %1</translation>
    </message>
    <message>
        <source>the web interface cannot be opened: %1</source>
        <translation>die Weboberfläche kann nicht geöffnet werden: %1</translation>
    </message>
    <message>
        <source>the sensor is now reached as %1</source>
        <translation>der Sensor ist jetzt als %1 erreichbar</translation>
    </message>
    <message>
        <source>web interface closed</source>
        <translation>Weboberfläche geschlossen</translation>
    </message>
</context>
</TS>
