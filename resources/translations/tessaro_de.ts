<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="de">
<context>
    <name></name>
    <message id="cam_zoom_info">
        <extracomment>Hint under the zoom slider.</extracomment>
        <source>Set the start zoom, then press record and walk.</source>
        <translation>Startzoom einstellen, dann Aufnahme drücken und losgehen.</translation>
    </message>
    <message id="cam_zoom_in">
        <extracomment>Zoom-out ramp (the default): the zoom falls to 1x while the user walks in.</extracomment>
        <source>Walk toward your subject while recording.</source>
        <translation>Geh während der Aufnahme auf dein Motiv zu.</translation>
    </message>
    <message id="cam_zoom_out">
        <extracomment>Zoom-in ramp: the zoom rises from 1x while the user walks back.</extracomment>
        <source>Walk away from your subject while recording.</source>
        <translation>Geh während der Aufnahme von deinem Motiv weg.</translation>
    </message>
    <message id="cam_duration">
        <extracomment>Title of the zoom duration picker.</extracomment>
        <source>Duration</source>
        <translation>Dauer</translation>
    </message>
    <message id="cam_sec">
        <extracomment>Unit after each number of the duration picker, as in "5 sec".</extracomment>
        <source>sec</source>
        <translation>s</translation>
    </message>
    <message id="cam_done">
        <extracomment>Button that closes the duration picker, keeping the duration chosen.</extracomment>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message id="cam_status_denied">
        <extracomment>Over the camera picture.</extracomment>
        <source>Tessaro may not use the camera. Allow camera access in your system's privacy settings, or add your user to the "video" group, then start Tessaro again.</source>
        <translation>Tessaro darf die Kamera nicht verwenden. Erlaube den Kamerazugriff in den Datenschutzeinstellungen des Systems oder füge deinen Benutzer der Gruppe „video“ hinzu und starte Tessaro neu.</translation>
    </message>
    <message id="cam_status_virtual">
        <extracomment>Over the camera picture.</extracomment>
        <source>No camera was found, so this is Tessaro's virtual camera: a street that reacts to the zoom like a real one.</source>
        <translation>Keine Kamera gefunden, daher ist dies Tessaros virtuelle Kamera: eine Straße, die wie eine echte auf den Zoom reagiert.</translation>
    </message>
    <message id="cam_status_format_missing">
        <extracomment>Over the camera picture when the camera lacks the format chosen before; %1 is that format ("4K"), %2 the one used instead ("720p").</extracomment>
        <source>This camera has no %1, so Tessaro records in %2.</source>
        <translation>Diese Kamera hat kein %1, daher nimmt Tessaro in %2 auf.</translation>
    </message>
    <message id="cam_status_resumed">
        <extracomment>Over the camera picture for a few seconds when a camera that was busy or unplugged runs again.</extracomment>
        <source>The camera is back.</source>
        <translation>Die Kamera ist wieder da.</translation>
    </message>
    <message id="cam_status_switch_failed">
        <extracomment>Over the camera picture when the other camera could not be opened; %1 says why. The camera in use goes on.</extracomment>
        <source>The other camera could not be opened. %1</source>
        <translation>Die andere Kamera konnte nicht geöffnet werden. %1</translation>
    </message>
    <message id="cam_recording_failed">
        <extracomment>Over the camera picture after a take failed; %1 says what went wrong.</extracomment>
        <source>The recording failed. %1</source>
        <translation>Die Aufnahme ist fehlgeschlagen. %1</translation>
    </message>
    <message id="preview_save">
        <extracomment>Button of the clip preview that copies the clip into the Videos folder.</extracomment>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message id="preview_save_hint">
        <extracomment>Tooltip of the save button.</extracomment>
        <source>Save a copy in your Videos folder</source>
        <translation>Eine Kopie im Ordner „Videos“ sichern</translation>
    </message>
    <message id="preview_share">
        <extracomment>Button of the clip preview that opens the share sheet.</extracomment>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message id="preview_close">
        <extracomment>Tooltip of the clip preview's close button.</extracomment>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message id="preview_cannot_play">
        <extracomment>Over the clip preview when the clip does not play; the reason follows on the next line.</extracomment>
        <source>This clip cannot be played.</source>
        <translation>Dieser Clip kann nicht abgespielt werden.</translation>
    </message>
    <message id="share_open">
        <extracomment>Share sheet: opens the clip in the default video player.</extracomment>
        <source>Open in video player</source>
        <translation>Im Videoplayer öffnen</translation>
    </message>
    <message id="share_show_in_folder">
        <extracomment>Share sheet: shows the clip in the file manager.</extracomment>
        <source>Show in folder</source>
        <translation>Im Ordner zeigen</translation>
    </message>
    <message id="share_copy">
        <extracomment>Share sheet: copies the clip to the clipboard, to paste into a folder or a chat.</extracomment>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message id="share_mail">
        <extracomment>Share sheet: a new e-mail with the clip attached.</extracomment>
        <source>Send by e-mail</source>
        <translation>Per E-Mail senden</translation>
    </message>
    <message id="share_save_as">
        <extracomment>Share sheet: saves a copy where the user chooses.</extracomment>
        <source>Save a copy as…</source>
        <translation>Kopie sichern unter …</translation>
    </message>
    <message id="share_save_as_title">
        <extracomment>Title of the file dialog of &quot;Save a copy as…&quot;.</extracomment>
        <source>Save a copy of the clip</source>
        <translation>Eine Kopie des Clips sichern</translation>
    </message>
    <message id="share_cancel">
        <extracomment>Share sheet: closes it without doing anything.</extracomment>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message id="tutorial_text_1">
        <extracomment>First-run tutorial, page 1 of 4, over a clip of a zoom-out ramp: explains the effect to someone who has never heard of it.</extracomment>
        <source>This is a dolly zoom: the person keeps the same size while the street behind them stretches away. Tessaro makes one for you. All you do is walk.</source>
        <translation>Das ist ein Dolly-Zoom: Die Person bleibt gleich groß, während sich die Straße hinter ihr in die Länge zieht. Tessaro macht ihn für dich. Du musst nur gehen.</translation>
    </message>
    <message id="tutorial_text_2">
        <extracomment>First-run tutorial, page 2 of 4, beside the zoom-in icon, over a zoom-in ramp.</extracomment>
        <source>With the zoom-in button (the magnifier with +), walk away from your subject while you record. Tessaro zooms in as you go, and the background closes in behind it.</source>
        <translation>Mit dem Hineinzoomen-Knopf (die Lupe mit +) gehst du während der Aufnahme von deinem Motiv weg. Tessaro zoomt dabei hinein, und der Hintergrund rückt hinter ihm näher.</translation>
    </message>
    <message id="tutorial_text_3">
        <extracomment>First-run tutorial, page 3 of 4, beside the zoom-out icon (the default mode).</extracomment>
        <source>With the zoom-out button (the magnifier with −), set the start zoom, then walk toward your subject. Tessaro zooms out as you go, and the background opens up.</source>
        <translation>Mit dem Herauszoomen-Knopf (die Lupe mit −) stellst du den Startzoom ein und gehst dann auf dein Motiv zu. Tessaro zoomt dabei heraus, und der Hintergrund öffnet sich.</translation>
    </message>
    <message id="tutorial_text_4">
        <extracomment>First-run tutorial, page 4 of 4, above the button that opens the camera.</extracomment>
        <source>Keep your subject in the middle, choose how long the zoom lasts and walk at an even pace. The recording stops by itself when the zoom is done.</source>
        <translation>Halte dein Motiv in der Mitte, wähle, wie lange der Zoom dauert, und geh gleichmäßig. Die Aufnahme endet von selbst, wenn der Zoom fertig ist.</translation>
    </message>
    <message id="tutorial_ready">
        <extracomment>Button on the last tutorial page that opens the camera.</extracomment>
        <source>Start</source>
        <translation>Los</translation>
    </message>
    <message id="RateAppFirstFirstLabel">
        <extracomment>First rating dialog, line 1.</extracomment>
        <source>Do you enjoy Tessaro?</source>
        <translation>Gefällt dir Tessaro?</translation>
    </message>
    <message id="RateAppFirstSecondLabel">
        <extracomment>First rating dialog, line 2.</extracomment>
        <source>We would love to know what you think.</source>
        <translation>Wir würden gern wissen, was du denkst.</translation>
    </message>
    <message id="RateAppFirstThirdLabel">
        <extracomment>First rating dialog, line 3, above the yes and no buttons.</extracomment>
        <source>Tell us in one tap.</source>
        <translation>Sag es uns mit einem Tipp.</translation>
    </message>
    <message id="RateAppLikedFirstLabel">
        <extracomment>Dialog after the user said they like the app, line 1.</extracomment>
        <source>Glad you like it!</source>
        <translation>Schön, dass es dir gefällt!</translation>
    </message>
    <message id="RateAppLikedSecondLabel">
        <extracomment>Dialog after the user said they like the app, line 2.</extracomment>
        <source>Would you rate Tessaro?</source>
        <translation>Magst du Tessaro bewerten?</translation>
    </message>
    <message id="RateAppLikedThirdLabel">
        <extracomment>Dialog after the user said they like the app, line 3.</extracomment>
        <source>It takes a moment and helps us a lot.</source>
        <translation>Es dauert nur einen Moment und hilft uns sehr.</translation>
    </message>
    <message id="RateAppMailFirstLabel">
        <extracomment>Feedback dialog after the user said they do not like the app, line 1.</extracomment>
        <source>Sorry to hear that.</source>
        <translation>Das tut uns leid.</translation>
    </message>
    <message id="RateAppMailSecondLabel">
        <extracomment>Feedback dialog, line 2.</extracomment>
        <source>Tell us what we should improve.</source>
        <translation>Sag uns, was wir verbessern sollen.</translation>
    </message>
    <message id="RateAppMailThirdLabel">
        <extracomment>Feedback dialog, line 3, above the send-mail button.</extracomment>
        <source>Send us a mail; we read every one.</source>
        <translation>Schreib uns eine Mail; wir lesen jede.</translation>
    </message>
    <message id="rate_like">
        <extracomment>First rating dialog: the user likes the app (leads to the review dialog).</extracomment>
        <source>Yes, I like it</source>
        <translation>Ja, gefällt mir</translation>
    </message>
    <message id="rate_dislike">
        <extracomment>First rating dialog: the user does not like the app (leads to the feedback dialog).</extracomment>
        <source>Not really</source>
        <translation>Nicht wirklich</translation>
    </message>
    <message id="rate_rate">
        <extracomment>Review dialog: opens Tessaro's page in the software centre.</extracomment>
        <source>Rate Tessaro</source>
        <translation>Tessaro bewerten</translation>
    </message>
    <message id="rate_write">
        <extracomment>Feedback dialog: opens the mail composer.</extracomment>
        <source>Write to us</source>
        <translation>Schreib uns</translation>
    </message>
    <message id="rate_not_now">
        <extracomment>Review and feedback dialogs: closes the dialog.</extracomment>
        <source>Not now</source>
        <translation>Jetzt nicht</translation>
    </message>
    <message id="mail_title">
        <extracomment>Title of the mail composer.</extracomment>
        <source>Feedback</source>
        <translation>Rückmeldung</translation>
    </message>
    <message id="mail_cancel">
        <extracomment>Mail composer: leaves without sending.</extracomment>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message id="mail_send">
        <extracomment>Mail composer: hands the mail to the user's mail program.</extracomment>
        <source>Send</source>
        <translation>Senden</translation>
    </message>
    <message id="mail_to">
        <extracomment>Mail composer: before the recipient's address.</extracomment>
        <source>To:</source>
        <translation>An:</translation>
    </message>
    <message id="mail_subject">
        <extracomment>Mail composer: before the subject field.</extracomment>
        <source>Subject:</source>
        <translation>Betreff:</translation>
    </message>
    <message id="mail_body_placeholder">
        <extracomment>Mail composer: shown in the empty message field.</extracomment>
        <source>Write your message here.</source>
        <translation>Schreib hier deine Nachricht.</translation>
    </message>
    <message id="mail_hint">
        <extracomment>Mail composer: under the message field.</extracomment>
        <source>Send opens your mail program with this message, ready to go.</source>
        <translation>Senden öffnet dein Mailprogramm mit dieser Nachricht, bereit zum Abschicken.</translation>
    </message>
    <message id="mail_error_no_program">
        <extracomment>Mail composer: Send could not reach the mail program; the text stays.</extracomment>
        <source>Your mail program could not be started. Copy your message, or try again.</source>
        <translation>Dein Mailprogramm konnte nicht gestartet werden. Kopiere deine Nachricht oder versuch es noch einmal.</translation>
    </message>
    <message id="rec_exists_already_choose_another">
        <source>%1 exists already; choose another --output, or remove it first.</source>
        <translation>%1 gibt es schon; wähle ein anderes --output oder entferne die Datei zuerst.</translation>
    </message>
    <message id="rec_cannot_written">
        <source>%1 cannot be written: %2</source>
        <translation>%1 kann nicht geschrieben werden: %2</translation>
    </message>
    <message id="rec_cannot_create_folder">
        <source>Cannot create the folder %1.</source>
        <translation>Der Ordner %1 kann nicht angelegt werden.</translation>
    </message>
    <message id="rec_holds_too_many_named">
        <source>%1 holds too many files named “%2” already.</source>
        <translation>%1 enthält schon zu viele Dateien namens „%2“.</translation>
    </message>
    <message id="rec_cannot_create_folder_2">
        <source>Cannot create the folder %1.</source>
        <translation>Der Ordner %1 kann nicht angelegt werden.</translation>
    </message>
    <message id="rec_cannot_create_temporary_folder">
        <source>Cannot create a temporary folder: %1</source>
        <translation>Kein temporärer Ordner möglich: %1</translation>
    </message>
    <message id="rec_camera_failed_nothing_recorded">
        <source>The camera failed: %1 Nothing was recorded.</source>
        <translation>Die Kamera ist ausgefallen: %1 Es wurde nichts aufgenommen.</translation>
    </message>
    <message id="rec_no_picture_came_camera">
        <source>No picture came from the camera within %1 s; nothing was recorded.</source>
        <translation>Binnen %1 s kam kein Bild von der Kamera; es wurde nichts aufgenommen.</translation>
    </message>
    <message id="rec_camera_has_no_records">
        <source>This camera has no %1; it records %2.</source>
        <translation>Diese Kamera hat kein %1; sie nimmt %2 auf.</translation>
    </message>
    <message id="rec_camera_stopped_after_format">
        <source>The camera stopped after the format change; nothing was recorded.</source>
        <translation>Die Kamera hat nach dem Formatwechsel aufgehört; es wurde nichts aufgenommen.</translation>
    </message>
    <message id="rec_zoom_outside_what_format">
        <source>--zoom %1 is outside what this format zooms sharply: from 1.0 to %2.</source>
        <translation>--zoom %1 liegt außerhalb dessen, was dieses Format scharf zoomt: von 1,0 bis %2.</translation>
    </message>
    <message id="rec_recording_s_ramp_fps">
        <source>Recording a %1 s %2 ramp at %3 (%4×%5, %6 fps) with the %7…</source>
        <translation>Nehme eine %1-s-Rampe (%2) in %3 (%4×%5, %6 fps) mit %7 auf …</translation>
    </message>
    <message id="rec_zoom">
        <source>zoom-in from 1.0× to %1</source>
        <translation>Hineinzoomen von 1,0× auf %1</translation>
    </message>
    <message id="rec_zoom_out">
        <source>zoom-out from %1 to 1.0×</source>
        <translation>Herauszoomen von %1 auf 1,0×</translation>
    </message>
    <message id="rec_recording_did_not_start">
        <source>the recording did not start.</source>
        <translation>die Aufnahme hat nicht begonnen.</translation>
    </message>
    <message id="rec_recording_could_not_start">
        <source>The recording could not start in %1: %2</source>
        <translation>Die Aufnahme konnte binnen %1 nicht beginnen: %2</translation>
    </message>
    <message id="rec_stopped_before_ramp_ended">
        <source>Stopped before the ramp ended; the clip so far is %1</source>
        <translation>Vor dem Ende der Rampe angehalten; der bisherige Clip ist %1</translation>
    </message>
    <message id="rec_stopped_before_any_picture">
        <source>Stopped before any picture was recorded; no clip was written.</source>
        <translation>Angehalten, bevor ein Bild aufgenommen wurde; es wurde kein Clip geschrieben.</translation>
    </message>
    <message id="rec_recording_did_not_finish">
        <source>The recording did not finish.</source>
        <translation>Die Aufnahme wurde nicht abgeschlossen.</translation>
    </message>
    <message id="rec_what_recorded">
        <source>%1 What was recorded is %2</source>
        <translation>%1 Was aufgenommen wurde, ist %2</translation>
    </message>
    <message id="rec_no_clip_written">
        <source>%1 No clip was written.</source>
        <translation>%1 Es wurde kein Clip geschrieben.</translation>
    </message>
    <message id="rec_length_s">
        <source>  length  %1 s</source>
        <translation>  Länge   %1 s</translation>
    </message>
    <message id="rec_frames_written_dropped">
        <source>  frames  %1 written, %2 dropped</source>
        <translation>  Bilder  %1 geschrieben, %2 verworfen</translation>
    </message>
    <message id="rec_start_first_frame_taken">
        <source>  start   first frame taken %1 after the press</source>
        <translation>  Start   erstes Bild %1 nach dem Drücken</translation>
    </message>
    <message id="rec_size_mb">
        <source>  size    %1 MB</source>
        <translation>  Größe   %1 MB</translation>
    </message>
    <message id="rec_zoom_first_frame_last">
        <source>  zoom    %1 on the first frame, %2 on the last</source>
        <translation>  Zoom    %1 im ersten Bild, %2 im letzten</translation>
    </message>
    <message id="rec_pixels_first_frame_last">
        <source>  pixels  %1 on the first frame, %2 on the last</source>
        <translation>  Pixel   %1 im ersten Bild, %2 im letzten</translation>
    </message>
    <message id="rec_sheet">
        <source>  sheet   %1</source>
        <translation>  Übersicht %1</translation>
    </message>
    <message id="rec_contact_sheet_could_not">
        <source>The contact sheet could not be written to %1.</source>
        <translation>Die Bildübersicht konnte nicht nach %1 geschrieben werden.</translation>
    </message>
    <message id="cli_record_camera_name_device">
        <source>Record with the camera NAME (a device name or path, or "virtual").</source>
        <translation>Mit der Kamera NAME aufnehmen (ein Gerätename oder -pfad oder „virtual“).</translation>
    </message>
    <message id="cli_print_every_camera_microphone">
        <source>Print every camera and microphone with its formats and position, and leave.</source>
        <translation>Jede Kamera und jedes Mikrofon mit Formaten und Lage ausgeben und beenden.</translation>
    </message>
    <message id="cli_draw_screen_name_without">
        <source>Draw the screen NAME without a display, write it to FILE.png and leave. The virtual camera is used unless --camera says otherwise.</source>
        <translation>Den Bildschirm NAME ohne Anzeige zeichnen, nach FILE.png schreiben und beenden. Verwendet wird die virtuelle Kamera, sofern --camera nichts anderes sagt.</translation>
    </message>
    <message id="cli_start_tutorial_explains_dolly">
        <source>Start on the tutorial that explains the dolly zoom, even after it was left once.</source>
        <translation>Mit der Einführung in den Dolly-Zoom beginnen, auch wenn sie schon einmal verlassen wurde.</translation>
    </message>
    <message id="cli_record_ramp_s_length">
        <source>record: the ramp's length, 1 to 15 whole seconds (default 5).</source>
        <translation>record: die Länge der Rampe, 1 bis 15 ganze Sekunden (Vorgabe 5).</translation>
    </message>
    <message id="cli_record_slider_s_zoom">
        <source>record: the slider's zoom, 1 (a flat ramp) or more (default 3). photo: the zoom, 1 to 10 (default 1).</source>
        <translation>record: der Zoom des Schiebereglers, 1 (eine flache Rampe) oder mehr (Vorgabe 3). photo: der Zoom, 1 bis 10 (Vorgabe 1).</translation>
    </message>
    <message id="cli_record_ramp_up_zoom">
        <source>record: ramp from 1.0 up to the zoom, for walking away (default: down to 1.0).</source>
        <translation>record: Rampe von 1,0 hinauf zum Zoom, zum Weggehen (Vorgabe: hinab auf 1,0).</translation>
    </message>
    <message id="cli_record_hd_hd_k">
        <source>record: hd (1920×1080 at 30), hd60 or 4k.</source>
        <translation>record: hd (1920×1080 bei 30), hd60 oder 4k.</translation>
    </message>
    <message id="cli_record_clip_s_file">
        <source>record: the clip's file (default: a new "Tessaro Demo" file in the documents folder). photo: the JPEG file (default: a new "Tessaro Photo" file there). An existing file is never replaced.</source>
        <translation>record: die Datei des Clips (Vorgabe: eine neue Datei „Tessaro Demo“ im Dokumente-Ordner). photo: die JPEG-Datei (Vorgabe: eine neue Datei „Tessaro Photo“ dort). Eine vorhandene Datei wird nie ersetzt.</translation>
    </message>
    <message id="cli_tessaro_dolly_zoom_video">
        <source>Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press record and walk.</source>
        <translation>Tessaro: eine Dolly-Zoom-Videokamera. Motiv einrahmen, Zoom einstellen, Aufnahme drücken und gehen.</translation>
    </message>
    <message id="cli_record_one_clip_without">
        <source>Record one clip without a display, with the options marked record:, and print where it is.</source>
        <translation>Einen Clip ohne Anzeige aufnehmen, mit den Optionen, die mit record: markiert sind, und ausgeben, wo er liegt.</translation>
    </message>
    <message id="cli_screenshot_png_file_write">
        <source>With --screenshot: the PNG file to write.</source>
        <translation>Mit --screenshot: die zu schreibende PNG-Datei.</translation>
    </message>
    <message id="cli_fps">
        <source>%1 fps</source>
        <translation>%1 fps</translation>
    </message>
    <message id="cli_front">
        <source>front</source>
        <translation>vorne</translation>
    </message>
    <message id="cli_back">
        <source>back</source>
        <translation>hinten</translation>
    </message>
    <message id="cli_position_unknown">
        <source>position unknown</source>
        <translation>Lage unbekannt</translation>
    </message>
    <message id="cli_cameras_choose_one_camera">
        <source>Cameras (choose one with --camera NAME):</source>
        <translation>Kameras (eine mit --camera NAME wählen):</translation>
    </message>
    <message id="cli_microphones">
        <source>Microphones:</source>
        <translation>Mikrofone:</translation>
    </message>
    <message id="cli_only_virtual_camera">
        <source> (only with the virtual camera)</source>
        <translation> (nur mit der virtuellen Kamera)</translation>
    </message>
    <message id="cli_duration_takes_whole_number">
        <source>--duration takes a whole number of seconds from 1 to 15, not "%1".</source>
        <translation>--duration nimmt eine ganze Zahl von Sekunden von 1 bis 15, nicht „%1“.</translation>
    </message>
    <message id="cli_format_takes_hd_hd">
        <source>--format takes hd, hd60 or 4k, not "%1".</source>
        <translation>--format nimmt hd, hd60 oder 4k, nicht „%1“.</translation>
    </message>
    <message id="cli_zoom_takes_zoom_flat">
        <source>--zoom takes a zoom from 1 (a flat ramp) to %1 at %2, such as 2.5, not "%3".</source>
        <translation>--zoom nimmt einen Zoom von 1 (eine flache Rampe) bis %1 bei %2, etwa 2.5, nicht „%3“.</translation>
    </message>
    <message id="cli_there_no_camera">
        <source>There is no camera “%1”.
%2</source>
        <translation>Es gibt keine Kamera „%1“.
%2</translation>
    </message>
    <message id="cli_record_takes_options_only">
        <source>record takes options only, not "%1".</source>
        <translation>record nimmt nur Optionen, nicht „%1“.</translation>
    </message>
    <message id="shot_there_no_screen_screens">
        <source>There is no screen "%1". Screens: %2.</source>
        <translation>Es gibt keinen Bildschirm „%1“. Bildschirme: %2.</translation>
    </message>
    <message id="shot_which_file_tessaro_screenshot">
        <source>Which file? tessaro --screenshot %1 FILE.png</source>
        <translation>Welche Datei? tessaro --screenshot %1 FILE.png</translation>
    </message>
    <message id="shot_screen_had_nothing_show">
        <source>The screen "%1" had nothing to show after %2 s: no picture came from the camera.</source>
        <translation>Der Bildschirm „%1“ hatte nach %2 s nichts zu zeigen: Von der Kamera kam kein Bild.</translation>
    </message>
    <message id="shot_could_not_write">
        <source>Could not write %1.</source>
        <translation>%1 konnte nicht geschrieben werden.</translation>
    </message>
    <message id="main_tessaro_needs_display_open">
        <source>Tessaro needs a display to open its window, and none was found (neither DISPLAY nor WAYLAND_DISPLAY is set). Run it from a desktop session, or under xvfb-run.</source>
        <translation>Tessaro braucht eine Anzeige, um sein Fenster zu öffnen, und es wurde keine gefunden (weder DISPLAY noch WAYLAND_DISPLAY ist gesetzt). Starte es aus einer Desktop-Sitzung oder unter xvfb-run.</translation>
    </message>
    <message id="movie_tessaro_records_files_computer">
        <source>Tessaro records to files on this computer only, not to “%1”.</source>
        <translation>Tessaro nimmt nur in Dateien auf diesem Computer auf, nicht nach „%1“.</translation>
    </message>
    <message id="movie_recording_cannot_saved_folder">
        <source>The recording cannot be saved: the folder “%1” cannot be created.</source>
        <translation>Die Aufnahme kann nicht gesichert werden: Der Ordner „%1“ kann nicht angelegt werden.</translation>
    </message>
    <message id="movie_recording_cannot_saved_file">
        <source>The recording cannot be saved: the file “%1” cannot be written (%2).</source>
        <translation>Die Aufnahme kann nicht gesichert werden: Die Datei „%1“ kann nicht geschrieben werden (%2).</translation>
    </message>
    <message id="movie_recording_failed">
        <source>The recording to “%1” failed: %2</source>
        <translation>Die Aufnahme nach „%1“ ist fehlgeschlagen: %2</translation>
    </message>
    <message id="movie_disk_full_recording_stopped">
        <source>The disk is full: the recording “%1” stopped; what was recorded so far is kept.</source>
        <translation>Der Datenträger ist voll: Die Aufnahme „%1“ wurde angehalten; das bisher Aufgenommene bleibt erhalten.</translation>
    </message>
    <message id="movie_recording_cannot_saved_file_2">
        <source>The recording cannot be saved: the file “%1” cannot be written.</source>
        <translation>Die Aufnahme kann nicht gesichert werden: Die Datei „%1“ kann nicht geschrieben werden.</translation>
    </message>
    <message id="movie_recording_needs_camera_running">
        <source>Recording needs the camera to be running.</source>
        <translation>Zum Aufnehmen muss die Kamera laufen.</translation>
    </message>
    <message id="movie_recording_clip">
        <source>Recording a clip</source>
        <translation>Ein Clip wird aufgenommen</translation>
    </message>
    <message id="movie_recording_did_not_finish">
        <source>The recording “%1” did not finish in time and may end early.</source>
        <translation>Die Aufnahme „%1“ wurde nicht rechtzeitig abgeschlossen und endet womöglich zu früh.</translation>
    </message>
    <message id="movie_recording_did_not_finish_2">
        <source>The recording “%1” did not finish in time and may end early.</source>
        <translation>Die Aufnahme „%1“ wurde nicht rechtzeitig abgeschlossen und endet womöglich zu früh.</translation>
    </message>
    <message id="movie_recording_stopped_before_any">
        <source>The recording stopped before any picture was recorded; “%1” was not written.</source>
        <translation>Die Aufnahme endete, bevor ein Bild aufgenommen wurde; „%1“ wurde nicht geschrieben.</translation>
    </message>
    <message id="session_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>Die Kamera „%1“ ist nicht mehr angeschlossen.</translation>
    </message>
    <message id="session_camera_offers_no_picture">
        <source>The camera “%1” offers no picture format Tessaro can use.</source>
        <translation>Die Kamera „%1“ bietet kein Bildformat, das Tessaro verwenden kann.</translation>
    </message>
    <message id="session_camera_cannot_opened">
        <source>The camera “%1” cannot be opened.</source>
        <translation>Die Kamera „%1“ kann nicht geöffnet werden.</translation>
    </message>
    <message id="session_camera_cannot_deliver_pictures">
        <source>The camera “%1” cannot deliver %2×%3 pictures.</source>
        <translation>Die Kamera „%1“ kann keine Bilder mit %2×%3 liefern.</translation>
    </message>
    <message id="session_camera_could_not_started">
        <source>The camera could not be started.</source>
        <translation>Die Kamera konnte nicht gestartet werden.</translation>
    </message>
    <message id="session_camera_use_another_program">
        <source>The camera “%1” is in use by another program. Tessaro starts it as soon as that program lets it go.</source>
        <translation>Die Kamera „%1“ wird von einem anderen Programm verwendet. Tessaro startet sie, sobald das Programm sie freigibt.</translation>
    </message>
    <message id="session_tessaro_may_not_use">
        <source>Tessaro may not use the camera “%1”: permission denied.</source>
        <translation>Tessaro darf die Kamera „%1“ nicht verwenden: Zugriff verweigert.</translation>
    </message>
    <message id="session_camera_stopped_delivering_pictures">
        <source>The camera “%1” stopped delivering pictures; was it unplugged?</source>
        <translation>Die Kamera „%1“ liefert keine Bilder mehr; wurde sie ausgesteckt?</translation>
    </message>
    <message id="session_camera_disconnected">
        <source>The camera “%1” was disconnected.</source>
        <translation>Die Kamera „%1“ wurde getrennt.</translation>
    </message>
    <message id="session_microphone_disconnected">
        <source>The microphone “%1” was disconnected.</source>
        <translation>Das Mikrofon „%1“ wurde getrennt.</translation>
    </message>
    <message id="session_microphone_gone_tessaro_goes">
        <source>The microphone “%1” is gone; Tessaro goes on without sound.</source>
        <translation>Das Mikrofon „%1“ ist weg; Tessaro macht ohne Ton weiter.</translation>
    </message>
    <message id="library_clip_cannot_read">
        <source>The clip “%1” cannot be read: %2.</source>
        <translation>Der Clip „%1“ kann nicht gelesen werden: %2.</translation>
    </message>
    <message id="library_cannot_written">
        <source>“%1” cannot be written: %2.</source>
        <translation>„%1“ kann nicht geschrieben werden: %2.</translation>
    </message>
    <message id="library_clip_cannot_read_2">
        <source>The clip “%1” cannot be read: %2.</source>
        <translation>Der Clip „%1“ kann nicht gelesen werden: %2.</translation>
    </message>
    <message id="library_cannot_written_2">
        <source>“%1” cannot be written: %2.</source>
        <translation>„%1“ kann nicht geschrieben werden: %2.</translation>
    </message>
    <message id="library_clip_no_longer_there">
        <source>The clip “%1” is no longer there.</source>
        <translation>Der Clip „%1“ ist nicht mehr da.</translation>
    </message>
    <message id="library_folder_cannot_created">
        <source>The folder “%1” cannot be created: %2.</source>
        <translation>Der Ordner „%1“ kann nicht angelegt werden: %2.</translation>
    </message>
    <message id="library_cannot_written_3">
        <source>“%1” cannot be written: %2.</source>
        <translation>„%1“ kann nicht geschrieben werden: %2.</translation>
    </message>
    <message id="library_there_no_free_file">
        <source>There is no free file name left in “%1”.</source>
        <translation>In „%1“ ist kein freier Dateiname mehr übrig.</translation>
    </message>
    <message id="camfile_camera_file_does_not">
        <source>The camera file “%1” does not exist.</source>
        <translation>Die Kameradatei „%1“ gibt es nicht.</translation>
    </message>
    <message id="camfile_camera_file_cannot_read">
        <source>The camera file “%1” cannot be read.</source>
        <translation>Die Kameradatei „%1“ kann nicht gelesen werden.</translation>
    </message>
    <message id="camfile_camera_file_empty">
        <source>The camera file “%1” is empty.</source>
        <translation>Die Kameradatei „%1“ ist leer.</translation>
    </message>
    <message id="camfile_camera_file_not_picture">
        <source>The camera file “%1” is not a picture Tessaro can read (PNG or JPEG).</source>
        <translation>Die Kameradatei „%1“ ist kein Bild, das Tessaro lesen kann (PNG oder JPEG).</translation>
    </message>
    <message id="camfile_picture_pixels_tessaro_takes">
        <source>The picture “%1” is %2×%3 pixels; Tessaro takes pictures of at most %4 pixels a side.</source>
        <translation>Das Bild „%1“ hat %2×%3 Pixel; Tessaro nimmt Bilder mit höchstens %4 Pixeln je Seite.</translation>
    </message>
    <message id="camfile_camera_file_not_picture_2">
        <source>The camera file “%1” is not a picture or a video Tessaro can play, or it is damaged (%2).</source>
        <translation>Die Kameradatei „%1“ ist kein Bild oder Video, das Tessaro abspielen kann, oder sie ist beschädigt (%2).</translation>
    </message>
    <message id="camfile_video_holds_no_picture">
        <source>The video “%1” holds no picture Tessaro can show; it may be cut short.</source>
        <translation>Das Video „%1“ enthält kein Bild, das Tessaro zeigen kann; es ist womöglich abgeschnitten.</translation>
    </message>
    <message id="camfile_picture_cannot_decoded_may">
        <source>The picture “%1” cannot be decoded; it may be cut short (%2).</source>
        <translation>Das Bild „%1“ kann nicht dekodiert werden; es ist womöglich abgeschnitten (%2).</translation>
    </message>
    <message id="writer_tessaro_cannot_record_gstreamer">
        <source>Tessaro cannot record: the GStreamer element “%1” is not installed.</source>
        <translation>Tessaro kann nicht aufnehmen: Das GStreamer-Element „%1“ ist nicht installiert.</translation>
    </message>
    <message id="writer_camera_s_picture_format">
        <source>The camera’s picture format cannot be recorded.</source>
        <translation>Das Bildformat der Kamera kann nicht aufgenommen werden.</translation>
    </message>
    <message id="writer_tessaro_cannot_record_no">
        <source>Tessaro cannot record: no H.264 video encoder is installed (the package gstreamer1.0-plugins-ugly has one).</source>
        <translation>Tessaro kann nicht aufnehmen: Es ist kein H.264-Videoencoder installiert (das Paket gstreamer1.0-plugins-ugly enthält einen).</translation>
    </message>
    <message id="writer_tessaro_cannot_record_camera">
        <source>Tessaro cannot record the camera’s %1×%2 pictures.</source>
        <translation>Tessaro kann die Bilder der Kamera mit %1×%2 nicht aufnehmen.</translation>
    </message>
    <message id="writer_recording_could_not_start">
        <source>The recording to “%1” could not start: %2</source>
        <translation>Die Aufnahme nach „%1“ konnte nicht beginnen: %2</translation>
    </message>
    <message id="input_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>Die Kamera „%1“ ist nicht mehr angeschlossen.</translation>
    </message>
    <message id="input_tessaro_may_not_use">
        <source>Tessaro may not use the camera “%1” (%2): permission denied. Allow camera access, or add your user to the “video” group.</source>
        <translation>Tessaro darf die Kamera „%1“ (%2) nicht verwenden: Zugriff verweigert. Erlaube den Kamerazugriff oder füge deinen Benutzer der Gruppe „video“ hinzu.</translation>
    </message>
    <message id="input_camera_use_another_program">
        <source>The camera “%1” is in use by another program.</source>
        <translation>Die Kamera „%1“ wird von einem anderen Programm verwendet.</translation>
    </message>
    <message id="input_camera_cannot_opened">
        <source>The camera “%1” cannot be opened: %2.</source>
        <translation>Die Kamera „%1“ kann nicht geöffnet werden: %2.</translation>
    </message>
    <message id="virtual_virtual_front_camera">
        <source>Virtual front camera</source>
        <translation>Virtuelle Frontkamera</translation>
    </message>
    <message id="virtual_virtual_back_camera">
        <source>Virtual back camera</source>
        <translation>Virtuelle Rückkamera</translation>
    </message>
    <message id="player_clip_cannot_played_gstreamer">
        <source>The clip cannot be played: GStreamer's playback elements are missing.</source>
        <translation>Der Clip kann nicht abgespielt werden: Die Wiedergabe-Elemente von GStreamer fehlen.</translation>
    </message>
    <message id="player_clip_cannot_played">
        <source>The clip “%1” cannot be played: %2</source>
        <translation>Der Clip „%1“ kann nicht abgespielt werden: %2</translation>
    </message>
    <message id="virtual_virtual_microphone">
        <source>Virtual microphone</source>
        <translation>Virtuelles Mikrofon</translation>
    </message>
    <message id="devices_camera_not_there_using">
        <source>The camera “%1” is not there; using the default camera instead.</source>
        <translation>Die Kamera „%1“ ist nicht da; stattdessen wird die Standardkamera verwendet.</translation>
    </message>
    <message id="device_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>Die Kamera „%1“ ist nicht mehr angeschlossen.</translation>
    </message>
    <message id="error_no_capture_device_requested">
        <source>No capture device of the requested kind was found.</source>
        <translation>Es wurde kein Aufnahmegerät der gewünschten Art gefunden.</translation>
    </message>
    <message id="photo_camera_not_running">
        <source>The camera is not running, so no photo was taken.</source>
        <translation>Die Kamera läuft nicht, daher wurde kein Foto aufgenommen.</translation>
    </message>
    <message id="photo_camera_stopped_before">
        <source>The camera stopped before the photo was taken.</source>
        <translation>Die Kamera wurde angehalten, bevor das Foto aufgenommen wurde.</translation>
    </message>
    <message id="photo_not_encoded">
        <source>The photo could not be encoded as JPEG.</source>
        <translation>Das Foto konnte nicht als JPEG gespeichert werden.</translation>
    </message>
    <message id="photo_no_camera_could_opened">
        <source>No camera could be opened, so no photo was taken.</source>
        <translation>Keine Kamera ließ sich öffnen, daher wurde kein Foto aufgenommen.</translation>
    </message>
    <message id="photo_faces_no_model">
        <source>Faces: no face model is installed (the package opencv-data), so none are looked for.</source>
        <translation>Gesichter: Es ist kein Gesichtsmodell installiert (das Paket opencv-data), daher wird nach keinen gesucht.</translation>
    </message>
    <message id="photo_faces_not_in_time">
        <source>Faces: the detector gave no answer within %1 seconds; the photo is taken anyway.</source>
        <translation>Gesichter: Die Erkennung hat innerhalb von %1 Sekunden nicht geantwortet; das Foto wird trotzdem aufgenommen.</translation>
    </message>
    <message id="photo_none_came_within">
        <source>No photo came from the camera within %1 seconds.</source>
        <translation>Innerhalb von %1 Sekunden kam kein Foto von der Kamera.</translation>
    </message>
    <message id="photo_no_photo_taken">
        <source>No photo was taken: %1</source>
        <translation>Es wurde kein Foto aufgenommen: %1</translation>
    </message>
    <message id="photo_size_pixels_shown">
        <source>Size: %1×%2 pixels, shown as %3×%4 (EXIF orientation %5).</source>
        <translation>Größe: %1×%2 Pixel, angezeigt als %3×%4 (EXIF-Ausrichtung %5).</translation>
    </message>
    <message id="photo_flash_fired">
        <source>Flash: fired.</source>
        <translation>Blitz: ausgelöst.</translation>
    </message>
    <message id="photo_faces_none">
        <source>Faces: none found.</source>
        <translation>Gesichter: keine gefunden.</translation>
    </message>
    <message id="photo_face_left_top_width">
        <source>Face %1: left %2, top %3, width %4, height %5 (fractions of the camera's picture).</source>
        <translation>Gesicht %1: links %2, oben %3, Breite %4, Höhe %5 (Anteile am Bild der Kamera).</translation>
    </message>
    <message id="cli_photo_one_still_without">
        <source>Take one photo without a display, with the options marked photo:, and print where it is.</source>
        <translation>Ein Foto ohne Anzeige aufnehmen, mit den Optionen, die mit photo: markiert sind, und ausgeben, wo es liegt.</translation>
    </message>
    <message id="cli_photo_resolution">
        <source>photo: crop and scale the photo to WxH pixels as it is seen, such as 1080x1920 (default: as the camera takes it).</source>
        <translation>photo: das Foto auf BxH Pixel zuschneiden und skalieren, wie es gesehen wird, etwa 1080x1920 (Vorgabe: wie die Kamera es aufnimmt).</translation>
    </message>
    <message id="cli_photo_faces">
        <source>photo: look for faces first and print their rectangles.</source>
        <translation>photo: zuerst nach Gesichtern suchen und ihre Rechtecke ausgeben.</translation>
    </message>
    <message id="cli_resolution_takes_wxh">
        <source>--resolution takes a size WxH from 1x1 to %1x%1, such as 1080x1920, not "%2".</source>
        <translation>--resolution nimmt eine Größe BxH von 1x1 bis %1x%1, etwa 1080x1920, nicht „%2“.</translation>
    </message>
    <message id="cli_photo_zoom_takes">
        <source>--zoom takes a zoom from 1 to %1 for a photo, such as 2.5, not "%2".</source>
        <translation>--zoom nimmt für ein Foto einen Zoom von 1 bis %1, etwa 2.5, nicht „%2“.</translation>
    </message>
    <message id="cli_photo_takes_options_only">
        <source>photo takes options only, not "%1".</source>
        <translation>photo nimmt nur Optionen, nicht „%1“.</translation>
    </message>
</context>
</TS>
