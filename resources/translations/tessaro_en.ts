<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <message id="cam_zoom_info">
        <extracomment>Hint under the zoom slider.</extracomment>
        <source>Set the start zoom, then press record and walk.</source>
        <translation>Set the start zoom, then press record and walk.</translation>
    </message>
    <message id="cam_zoom_in">
        <extracomment>Zoom-out ramp (the default): the zoom falls to 1x while the user walks in.</extracomment>
        <source>Walk toward your subject while recording.</source>
        <translation>Walk toward your subject while recording.</translation>
    </message>
    <message id="cam_zoom_out">
        <extracomment>Zoom-in ramp: the zoom rises from 1x while the user walks back.</extracomment>
        <source>Walk away from your subject while recording.</source>
        <translation>Walk away from your subject while recording.</translation>
    </message>
    <message id="cam_duration">
        <extracomment>Title of the zoom duration picker.</extracomment>
        <source>Duration</source>
        <translation>Duration</translation>
    </message>
    <message id="cam_sec">
        <extracomment>Unit after each number of the duration picker, as in "5 sec".</extracomment>
        <source>sec</source>
        <translation>sec</translation>
    </message>
    <message id="cam_done">
        <extracomment>Button that closes the duration picker, keeping the duration chosen.</extracomment>
        <source>Done</source>
        <translation>Done</translation>
    </message>
    <message id="cam_status_denied">
        <extracomment>Over the camera picture.</extracomment>
        <source>Tessaro may not use the camera. Allow camera access in your system's privacy settings, or add your user to the "video" group, then start Tessaro again.</source>
        <translation>Tessaro may not use the camera. Allow camera access in your system's privacy settings, or add your user to the "video" group, then start Tessaro again.</translation>
    </message>
    <message id="cam_status_virtual">
        <extracomment>Over the camera picture.</extracomment>
        <source>No camera was found, so this is Tessaro's virtual camera: a street that reacts to the zoom like a real one.</source>
        <translation>No camera was found, so this is Tessaro's virtual camera: a street that reacts to the zoom like a real one.</translation>
    </message>
    <message id="cam_status_format_missing">
        <extracomment>Over the camera picture when the camera lacks the format chosen before; %1 is that format ("4K"), %2 the one used instead ("720p").</extracomment>
        <source>This camera has no %1, so Tessaro records in %2.</source>
        <translation>This camera has no %1, so Tessaro records in %2.</translation>
    </message>
    <message id="cam_status_resumed">
        <extracomment>Over the camera picture for a few seconds when a camera that was busy or unplugged runs again.</extracomment>
        <source>The camera is back.</source>
        <translation>The camera is back.</translation>
    </message>
    <message id="cam_status_switch_failed">
        <extracomment>Over the camera picture when the other camera could not be opened; %1 says why. The camera in use goes on.</extracomment>
        <source>The other camera could not be opened. %1</source>
        <translation>The other camera could not be opened. %1</translation>
    </message>
    <message id="cam_recording_failed">
        <extracomment>Over the camera picture after a take failed; %1 says what went wrong.</extracomment>
        <source>The recording failed. %1</source>
        <translation>The recording failed. %1</translation>
    </message>
    <message id="preview_save">
        <extracomment>Button of the clip preview that copies the clip into the Videos folder.</extracomment>
        <source>Save</source>
        <translation>Save</translation>
    </message>
    <message id="preview_save_hint">
        <extracomment>Tooltip of the save button.</extracomment>
        <source>Save a copy in your Videos folder</source>
        <translation>Save a copy in your Videos folder</translation>
    </message>
    <message id="preview_share">
        <extracomment>Button of the clip preview that opens the share sheet.</extracomment>
        <source>Share</source>
        <translation>Share</translation>
    </message>
    <message id="preview_close">
        <extracomment>Tooltip of the clip preview's close button.</extracomment>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message id="preview_cannot_play">
        <extracomment>Over the clip preview when the clip does not play; the reason follows on the next line.</extracomment>
        <source>This clip cannot be played.</source>
        <translation>This clip cannot be played.</translation>
    </message>
    <message id="share_open">
        <extracomment>Share sheet: opens the clip in the default video player.</extracomment>
        <source>Open in video player</source>
        <translation>Open in video player</translation>
    </message>
    <message id="share_show_in_folder">
        <extracomment>Share sheet: shows the clip in the file manager.</extracomment>
        <source>Show in folder</source>
        <translation>Show in folder</translation>
    </message>
    <message id="share_copy">
        <extracomment>Share sheet: copies the clip to the clipboard, to paste into a folder or a chat.</extracomment>
        <source>Copy</source>
        <translation>Copy</translation>
    </message>
    <message id="share_mail">
        <extracomment>Share sheet: a new e-mail with the clip attached.</extracomment>
        <source>Send by e-mail</source>
        <translation>Send by e-mail</translation>
    </message>
    <message id="share_save_as">
        <extracomment>Share sheet: saves a copy where the user chooses.</extracomment>
        <source>Save a copy as…</source>
        <translation>Save a copy as…</translation>
    </message>
    <message id="share_save_as_title">
        <extracomment>Title of the file dialog of &quot;Save a copy as…&quot;.</extracomment>
        <source>Save a copy of the clip</source>
        <translation>Save a copy of the clip</translation>
    </message>
    <message id="share_cancel">
        <extracomment>Share sheet: closes it without doing anything.</extracomment>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message id="tutorial_text_1">
        <extracomment>First-run tutorial, page 1 of 4, over a clip of a zoom-out ramp: explains the effect to someone who has never heard of it.</extracomment>
        <source>This is a dolly zoom: the person keeps the same size while the street behind them stretches away. Tessaro makes one for you. All you do is walk.</source>
        <translation>This is a dolly zoom: the person keeps the same size while the street behind them stretches away. Tessaro makes one for you. All you do is walk.</translation>
    </message>
    <message id="tutorial_text_2">
        <extracomment>First-run tutorial, page 2 of 4, beside the zoom-in icon, over a zoom-in ramp.</extracomment>
        <source>With the zoom-in button (the magnifier with +), walk away from your subject while you record. Tessaro zooms in as you go, and the background closes in behind it.</source>
        <translation>With the zoom-in button (the magnifier with +), walk away from your subject while you record. Tessaro zooms in as you go, and the background closes in behind it.</translation>
    </message>
    <message id="tutorial_text_3">
        <extracomment>First-run tutorial, page 3 of 4, beside the zoom-out icon (the default mode).</extracomment>
        <source>With the zoom-out button (the magnifier with −), set the start zoom, then walk toward your subject. Tessaro zooms out as you go, and the background opens up.</source>
        <translation>With the zoom-out button (the magnifier with −), set the start zoom, then walk toward your subject. Tessaro zooms out as you go, and the background opens up.</translation>
    </message>
    <message id="tutorial_text_4">
        <extracomment>First-run tutorial, page 4 of 4, above the button that opens the camera.</extracomment>
        <source>Keep your subject in the middle, choose how long the zoom lasts and walk at an even pace. The recording stops by itself when the zoom is done.</source>
        <translation>Keep your subject in the middle, choose how long the zoom lasts and walk at an even pace. The recording stops by itself when the zoom is done.</translation>
    </message>
    <message id="tutorial_ready">
        <extracomment>Button on the last tutorial page that opens the camera.</extracomment>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message id="RateAppFirstFirstLabel">
        <extracomment>First rating dialog, line 1.</extracomment>
        <source>Do you enjoy Tessaro?</source>
        <translation>Do you enjoy Tessaro?</translation>
    </message>
    <message id="RateAppFirstSecondLabel">
        <extracomment>First rating dialog, line 2.</extracomment>
        <source>We would love to know what you think.</source>
        <translation>We would love to know what you think.</translation>
    </message>
    <message id="RateAppFirstThirdLabel">
        <extracomment>First rating dialog, line 3, above the yes and no buttons.</extracomment>
        <source>Tell us in one tap.</source>
        <translation>Tell us in one tap.</translation>
    </message>
    <message id="RateAppLikedFirstLabel">
        <extracomment>Dialog after the user said they like the app, line 1.</extracomment>
        <source>Glad you like it!</source>
        <translation>Glad you like it!</translation>
    </message>
    <message id="RateAppLikedSecondLabel">
        <extracomment>Dialog after the user said they like the app, line 2.</extracomment>
        <source>Would you rate Tessaro?</source>
        <translation>Would you rate Tessaro?</translation>
    </message>
    <message id="RateAppLikedThirdLabel">
        <extracomment>Dialog after the user said they like the app, line 3.</extracomment>
        <source>It takes a moment and helps us a lot.</source>
        <translation>It takes a moment and helps us a lot.</translation>
    </message>
    <message id="RateAppMailFirstLabel">
        <extracomment>Feedback dialog after the user said they do not like the app, line 1.</extracomment>
        <source>Sorry to hear that.</source>
        <translation>Sorry to hear that.</translation>
    </message>
    <message id="RateAppMailSecondLabel">
        <extracomment>Feedback dialog, line 2.</extracomment>
        <source>Tell us what we should improve.</source>
        <translation>Tell us what we should improve.</translation>
    </message>
    <message id="RateAppMailThirdLabel">
        <extracomment>Feedback dialog, line 3, above the send-mail button.</extracomment>
        <source>Send us a mail; we read every one.</source>
        <translation>Send us a mail; we read every one.</translation>
    </message>
    <message id="rate_like">
        <extracomment>First rating dialog: the user likes the app (leads to the review dialog).</extracomment>
        <source>Yes, I like it</source>
        <translation>Yes, I like it</translation>
    </message>
    <message id="rate_dislike">
        <extracomment>First rating dialog: the user does not like the app (leads to the feedback dialog).</extracomment>
        <source>Not really</source>
        <translation>Not really</translation>
    </message>
    <message id="rate_rate">
        <extracomment>Review dialog: opens Tessaro's page in the software centre.</extracomment>
        <source>Rate Tessaro</source>
        <translation>Rate Tessaro</translation>
    </message>
    <message id="rate_write">
        <extracomment>Feedback dialog: opens the mail composer.</extracomment>
        <source>Write to us</source>
        <translation>Write to us</translation>
    </message>
    <message id="rate_not_now">
        <extracomment>Review and feedback dialogs: closes the dialog.</extracomment>
        <source>Not now</source>
        <translation>Not now</translation>
    </message>
    <message id="mail_title">
        <extracomment>Title of the mail composer.</extracomment>
        <source>Feedback</source>
        <translation>Feedback</translation>
    </message>
    <message id="mail_cancel">
        <extracomment>Mail composer: leaves without sending.</extracomment>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message id="mail_send">
        <extracomment>Mail composer: hands the mail to the user's mail program.</extracomment>
        <source>Send</source>
        <translation>Send</translation>
    </message>
    <message id="mail_to">
        <extracomment>Mail composer: before the recipient's address.</extracomment>
        <source>To:</source>
        <translation>To:</translation>
    </message>
    <message id="mail_subject">
        <extracomment>Mail composer: before the subject field.</extracomment>
        <source>Subject:</source>
        <translation>Subject:</translation>
    </message>
    <message id="mail_body_placeholder">
        <extracomment>Mail composer: shown in the empty message field.</extracomment>
        <source>Write your message here.</source>
        <translation>Write your message here.</translation>
    </message>
    <message id="mail_hint">
        <extracomment>Mail composer: under the message field.</extracomment>
        <source>Send opens your mail program with this message, ready to go.</source>
        <translation>Send opens your mail program with this message, ready to go.</translation>
    </message>
    <message id="mail_error_no_program">
        <extracomment>Mail composer: Send could not reach the mail program; the text stays.</extracomment>
        <source>Your mail program could not be started. Copy your message, or try again.</source>
        <translation>Your mail program could not be started. Copy your message, or try again.</translation>
    </message>
    <message id="rec_exists_already_choose_another">
        <source>%1 exists already; choose another --output, or remove it first.</source>
        <translation>%1 exists already; choose another --output, or remove it first.</translation>
    </message>
    <message id="rec_cannot_written">
        <source>%1 cannot be written: %2</source>
        <translation>%1 cannot be written: %2</translation>
    </message>
    <message id="rec_cannot_create_folder">
        <source>Cannot create the folder %1.</source>
        <translation>Cannot create the folder %1.</translation>
    </message>
    <message id="rec_holds_too_many_named">
        <source>%1 holds too many files named “%2” already.</source>
        <translation>%1 holds too many files named “%2” already.</translation>
    </message>
    <message id="rec_cannot_create_folder_2">
        <source>Cannot create the folder %1.</source>
        <translation>Cannot create the folder %1.</translation>
    </message>
    <message id="rec_cannot_create_temporary_folder">
        <source>Cannot create a temporary folder: %1</source>
        <translation>Cannot create a temporary folder: %1</translation>
    </message>
    <message id="rec_camera_failed_nothing_recorded">
        <source>The camera failed: %1 Nothing was recorded.</source>
        <translation>The camera failed: %1 Nothing was recorded.</translation>
    </message>
    <message id="rec_no_picture_came_camera">
        <source>No picture came from the camera within %1 s; nothing was recorded.</source>
        <translation>No picture came from the camera within %1 s; nothing was recorded.</translation>
    </message>
    <message id="rec_camera_has_no_records">
        <source>This camera has no %1; it records %2.</source>
        <translation>This camera has no %1; it records %2.</translation>
    </message>
    <message id="rec_camera_stopped_after_format">
        <source>The camera stopped after the format change; nothing was recorded.</source>
        <translation>The camera stopped after the format change; nothing was recorded.</translation>
    </message>
    <message id="rec_zoom_outside_what_format">
        <source>--zoom %1 is outside what this format zooms sharply: from 1.0 to %2.</source>
        <translation>--zoom %1 is outside what this format zooms sharply: from 1.0 to %2.</translation>
    </message>
    <message id="rec_recording_s_ramp_fps">
        <source>Recording a %1 s %2 ramp at %3 (%4×%5, %6 fps) with the %7…</source>
        <translation>Recording a %1 s %2 ramp at %3 (%4×%5, %6 fps) with the %7…</translation>
    </message>
    <message id="rec_zoom">
        <source>zoom-in from 1.0× to %1</source>
        <translation>zoom-in from 1.0× to %1</translation>
    </message>
    <message id="rec_zoom_out">
        <source>zoom-out from %1 to 1.0×</source>
        <translation>zoom-out from %1 to 1.0×</translation>
    </message>
    <message id="rec_recording_did_not_start">
        <source>the recording did not start.</source>
        <translation>the recording did not start.</translation>
    </message>
    <message id="rec_recording_could_not_start">
        <source>The recording could not start in %1: %2</source>
        <translation>The recording could not start in %1: %2</translation>
    </message>
    <message id="rec_stopped_before_ramp_ended">
        <source>Stopped before the ramp ended; the clip so far is %1</source>
        <translation>Stopped before the ramp ended; the clip so far is %1</translation>
    </message>
    <message id="rec_stopped_before_any_picture">
        <source>Stopped before any picture was recorded; no clip was written.</source>
        <translation>Stopped before any picture was recorded; no clip was written.</translation>
    </message>
    <message id="rec_recording_did_not_finish">
        <source>The recording did not finish.</source>
        <translation>The recording did not finish.</translation>
    </message>
    <message id="rec_what_recorded">
        <source>%1 What was recorded is %2</source>
        <translation>%1 What was recorded is %2</translation>
    </message>
    <message id="rec_no_clip_written">
        <source>%1 No clip was written.</source>
        <translation>%1 No clip was written.</translation>
    </message>
    <message id="rec_length_s">
        <source>  length  %1 s</source>
        <translation>  length  %1 s</translation>
    </message>
    <message id="rec_frames_written_dropped">
        <source>  frames  %1 written, %2 dropped</source>
        <translation>  frames  %1 written, %2 dropped</translation>
    </message>
    <message id="rec_start_first_frame_taken">
        <source>  start   first frame taken %1 after the press</source>
        <translation>  start   first frame taken %1 after the press</translation>
    </message>
    <message id="rec_size_mb">
        <source>  size    %1 MB</source>
        <translation>  size    %1 MB</translation>
    </message>
    <message id="rec_zoom_first_frame_last">
        <source>  zoom    %1 on the first frame, %2 on the last</source>
        <translation>  zoom    %1 on the first frame, %2 on the last</translation>
    </message>
    <message id="rec_pixels_first_frame_last">
        <source>  pixels  %1 on the first frame, %2 on the last</source>
        <translation>  pixels  %1 on the first frame, %2 on the last</translation>
    </message>
    <message id="rec_sheet">
        <source>  sheet   %1</source>
        <translation>  sheet   %1</translation>
    </message>
    <message id="rec_contact_sheet_could_not">
        <source>The contact sheet could not be written to %1.</source>
        <translation>The contact sheet could not be written to %1.</translation>
    </message>
    <message id="cli_record_camera_name_device">
        <source>Record with the camera NAME (a device name or path, or "virtual").</source>
        <translation>Record with the camera NAME (a device name or path, or "virtual").</translation>
    </message>
    <message id="cli_print_every_camera_microphone">
        <source>Print every camera and microphone with its formats and position, and leave.</source>
        <translation>Print every camera and microphone with its formats and position, and leave.</translation>
    </message>
    <message id="cli_draw_screen_name_without">
        <source>Draw the screen NAME without a display, write it to FILE.png and leave. The virtual camera is used unless --camera says otherwise.</source>
        <translation>Draw the screen NAME without a display, write it to FILE.png and leave. The virtual camera is used unless --camera says otherwise.</translation>
    </message>
    <message id="cli_start_tutorial_explains_dolly">
        <source>Start on the tutorial that explains the dolly zoom, even after it was left once.</source>
        <translation>Start on the tutorial that explains the dolly zoom, even after it was left once.</translation>
    </message>
    <message id="cli_record_ramp_s_length">
        <source>record: the ramp's length, 1 to 15 whole seconds (default 5).</source>
        <translation>record: the ramp's length, 1 to 15 whole seconds (default 5).</translation>
    </message>
    <message id="cli_record_slider_s_zoom">
        <source>record: the slider's zoom, 1 (a flat ramp) or more (default 3). photo: the zoom, 1 to 10 (default 1).</source>
        <translation>record: the slider's zoom, 1 (a flat ramp) or more (default 3). photo: the zoom, 1 to 10 (default 1).</translation>
    </message>
    <message id="cli_record_ramp_up_zoom">
        <source>record: ramp from 1.0 up to the zoom, for walking away (default: down to 1.0).</source>
        <translation>record: ramp from 1.0 up to the zoom, for walking away (default: down to 1.0).</translation>
    </message>
    <message id="cli_record_hd_hd_k">
        <source>record: hd (1920×1080 at 30), hd60 or 4k.</source>
        <translation>record: hd (1920×1080 at 30), hd60 or 4k.</translation>
    </message>
    <message id="cli_record_clip_s_file">
        <source>record: the clip's file (default: a new "Tessaro Demo" file in the documents folder). photo: the JPEG file (default: a new "Tessaro Photo" file there). An existing file is never replaced.</source>
        <translation>record: the clip's file (default: a new "Tessaro Demo" file in the documents folder). photo: the JPEG file (default: a new "Tessaro Photo" file there). An existing file is never replaced.</translation>
    </message>
    <message id="cli_tessaro_dolly_zoom_video">
        <source>Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press record and walk.</source>
        <translation>Tessaro: a dolly-zoom video camera. Frame a subject, set the zoom, press record and walk.</translation>
    </message>
    <message id="cli_record_one_clip_without">
        <source>Record one clip without a display, with the options marked record:, and print where it is.</source>
        <translation>Record one clip without a display, with the options marked record:, and print where it is.</translation>
    </message>
    <message id="cli_screenshot_png_file_write">
        <source>With --screenshot: the PNG file to write.</source>
        <translation>With --screenshot: the PNG file to write.</translation>
    </message>
    <message id="cli_fps">
        <source>%1 fps</source>
        <translation>%1 fps</translation>
    </message>
    <message id="cli_front">
        <source>front</source>
        <translation>front</translation>
    </message>
    <message id="cli_back">
        <source>back</source>
        <translation>back</translation>
    </message>
    <message id="cli_position_unknown">
        <source>position unknown</source>
        <translation>position unknown</translation>
    </message>
    <message id="cli_cameras_choose_one_camera">
        <source>Cameras (choose one with --camera NAME):</source>
        <translation>Cameras (choose one with --camera NAME):</translation>
    </message>
    <message id="cli_microphones">
        <source>Microphones:</source>
        <translation>Microphones:</translation>
    </message>
    <message id="cli_only_virtual_camera">
        <source> (only with the virtual camera)</source>
        <translation> (only with the virtual camera)</translation>
    </message>
    <message id="cli_duration_takes_whole_number">
        <source>--duration takes a whole number of seconds from 1 to 15, not "%1".</source>
        <translation>--duration takes a whole number of seconds from 1 to 15, not "%1".</translation>
    </message>
    <message id="cli_format_takes_hd_hd">
        <source>--format takes hd, hd60 or 4k, not "%1".</source>
        <translation>--format takes hd, hd60 or 4k, not "%1".</translation>
    </message>
    <message id="cli_zoom_takes_zoom_flat">
        <source>--zoom takes a zoom from 1 (a flat ramp) to %1 at %2, such as 2.5, not "%3".</source>
        <translation>--zoom takes a zoom from 1 (a flat ramp) to %1 at %2, such as 2.5, not "%3".</translation>
    </message>
    <message id="cli_there_no_camera">
        <source>There is no camera “%1”.
%2</source>
        <translation>There is no camera “%1”.
%2</translation>
    </message>
    <message id="cli_record_takes_options_only">
        <source>record takes options only, not "%1".</source>
        <translation>record takes options only, not "%1".</translation>
    </message>
    <message id="shot_there_no_screen_screens">
        <source>There is no screen "%1". Screens: %2.</source>
        <translation>There is no screen "%1". Screens: %2.</translation>
    </message>
    <message id="shot_which_file_tessaro_screenshot">
        <source>Which file? tessaro --screenshot %1 FILE.png</source>
        <translation>Which file? tessaro --screenshot %1 FILE.png</translation>
    </message>
    <message id="shot_screen_had_nothing_show">
        <source>The screen "%1" had nothing to show after %2 s: no picture came from the camera.</source>
        <translation>The screen "%1" had nothing to show after %2 s: no picture came from the camera.</translation>
    </message>
    <message id="shot_could_not_write">
        <source>Could not write %1.</source>
        <translation>Could not write %1.</translation>
    </message>
    <message id="main_tessaro_needs_display_open">
        <source>Tessaro needs a display to open its window, and none was found (neither DISPLAY nor WAYLAND_DISPLAY is set). Run it from a desktop session, or under xvfb-run.</source>
        <translation>Tessaro needs a display to open its window, and none was found (neither DISPLAY nor WAYLAND_DISPLAY is set). Run it from a desktop session, or under xvfb-run.</translation>
    </message>
    <message id="movie_tessaro_records_files_computer">
        <source>Tessaro records to files on this computer only, not to “%1”.</source>
        <translation>Tessaro records to files on this computer only, not to “%1”.</translation>
    </message>
    <message id="movie_recording_cannot_saved_folder">
        <source>The recording cannot be saved: the folder “%1” cannot be created.</source>
        <translation>The recording cannot be saved: the folder “%1” cannot be created.</translation>
    </message>
    <message id="movie_recording_cannot_saved_file">
        <source>The recording cannot be saved: the file “%1” cannot be written (%2).</source>
        <translation>The recording cannot be saved: the file “%1” cannot be written (%2).</translation>
    </message>
    <message id="movie_recording_failed">
        <source>The recording to “%1” failed: %2</source>
        <translation>The recording to “%1” failed: %2</translation>
    </message>
    <message id="movie_disk_full_recording_stopped">
        <source>The disk is full: the recording “%1” stopped; what was recorded so far is kept.</source>
        <translation>The disk is full: the recording “%1” stopped; what was recorded so far is kept.</translation>
    </message>
    <message id="movie_recording_cannot_saved_file_2">
        <source>The recording cannot be saved: the file “%1” cannot be written.</source>
        <translation>The recording cannot be saved: the file “%1” cannot be written.</translation>
    </message>
    <message id="movie_recording_needs_camera_running">
        <source>Recording needs the camera to be running.</source>
        <translation>Recording needs the camera to be running.</translation>
    </message>
    <message id="movie_recording_clip">
        <source>Recording a clip</source>
        <translation>Recording a clip</translation>
    </message>
    <message id="movie_recording_did_not_finish">
        <source>The recording “%1” did not finish in time and may end early.</source>
        <translation>The recording “%1” did not finish in time and may end early.</translation>
    </message>
    <message id="movie_recording_did_not_finish_2">
        <source>The recording “%1” did not finish in time and may end early.</source>
        <translation>The recording “%1” did not finish in time and may end early.</translation>
    </message>
    <message id="movie_recording_stopped_before_any">
        <source>The recording stopped before any picture was recorded; “%1” was not written.</source>
        <translation>The recording stopped before any picture was recorded; “%1” was not written.</translation>
    </message>
    <message id="session_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>The camera “%1” is no longer connected.</translation>
    </message>
    <message id="session_camera_offers_no_picture">
        <source>The camera “%1” offers no picture format Tessaro can use.</source>
        <translation>The camera “%1” offers no picture format Tessaro can use.</translation>
    </message>
    <message id="session_camera_cannot_opened">
        <source>The camera “%1” cannot be opened.</source>
        <translation>The camera “%1” cannot be opened.</translation>
    </message>
    <message id="session_camera_cannot_deliver_pictures">
        <source>The camera “%1” cannot deliver %2×%3 pictures.</source>
        <translation>The camera “%1” cannot deliver %2×%3 pictures.</translation>
    </message>
    <message id="session_camera_could_not_started">
        <source>The camera could not be started.</source>
        <translation>The camera could not be started.</translation>
    </message>
    <message id="session_camera_use_another_program">
        <source>The camera “%1” is in use by another program. Tessaro starts it as soon as that program lets it go.</source>
        <translation>The camera “%1” is in use by another program. Tessaro starts it as soon as that program lets it go.</translation>
    </message>
    <message id="session_tessaro_may_not_use">
        <source>Tessaro may not use the camera “%1”: permission denied.</source>
        <translation>Tessaro may not use the camera “%1”: permission denied.</translation>
    </message>
    <message id="session_camera_stopped_delivering_pictures">
        <source>The camera “%1” stopped delivering pictures; was it unplugged?</source>
        <translation>The camera “%1” stopped delivering pictures; was it unplugged?</translation>
    </message>
    <message id="session_camera_disconnected">
        <source>The camera “%1” was disconnected.</source>
        <translation>The camera “%1” was disconnected.</translation>
    </message>
    <message id="session_microphone_disconnected">
        <source>The microphone “%1” was disconnected.</source>
        <translation>The microphone “%1” was disconnected.</translation>
    </message>
    <message id="session_microphone_gone_tessaro_goes">
        <source>The microphone “%1” is gone; Tessaro goes on without sound.</source>
        <translation>The microphone “%1” is gone; Tessaro goes on without sound.</translation>
    </message>
    <message id="library_clip_cannot_read">
        <source>The clip “%1” cannot be read: %2.</source>
        <translation>The clip “%1” cannot be read: %2.</translation>
    </message>
    <message id="library_cannot_written">
        <source>“%1” cannot be written: %2.</source>
        <translation>“%1” cannot be written: %2.</translation>
    </message>
    <message id="library_clip_cannot_read_2">
        <source>The clip “%1” cannot be read: %2.</source>
        <translation>The clip “%1” cannot be read: %2.</translation>
    </message>
    <message id="library_cannot_written_2">
        <source>“%1” cannot be written: %2.</source>
        <translation>“%1” cannot be written: %2.</translation>
    </message>
    <message id="library_clip_no_longer_there">
        <source>The clip “%1” is no longer there.</source>
        <translation>The clip “%1” is no longer there.</translation>
    </message>
    <message id="library_folder_cannot_created">
        <source>The folder “%1” cannot be created: %2.</source>
        <translation>The folder “%1” cannot be created: %2.</translation>
    </message>
    <message id="library_cannot_written_3">
        <source>“%1” cannot be written: %2.</source>
        <translation>“%1” cannot be written: %2.</translation>
    </message>
    <message id="library_there_no_free_file">
        <source>There is no free file name left in “%1”.</source>
        <translation>There is no free file name left in “%1”.</translation>
    </message>
    <message id="camfile_camera_file_does_not">
        <source>The camera file “%1” does not exist.</source>
        <translation>The camera file “%1” does not exist.</translation>
    </message>
    <message id="camfile_camera_file_cannot_read">
        <source>The camera file “%1” cannot be read.</source>
        <translation>The camera file “%1” cannot be read.</translation>
    </message>
    <message id="camfile_camera_file_empty">
        <source>The camera file “%1” is empty.</source>
        <translation>The camera file “%1” is empty.</translation>
    </message>
    <message id="camfile_camera_file_not_picture">
        <source>The camera file “%1” is not a picture Tessaro can read (PNG or JPEG).</source>
        <translation>The camera file “%1” is not a picture Tessaro can read (PNG or JPEG).</translation>
    </message>
    <message id="camfile_picture_pixels_tessaro_takes">
        <source>The picture “%1” is %2×%3 pixels; Tessaro takes pictures of at most %4 pixels a side.</source>
        <translation>The picture “%1” is %2×%3 pixels; Tessaro takes pictures of at most %4 pixels a side.</translation>
    </message>
    <message id="camfile_camera_file_not_picture_2">
        <source>The camera file “%1” is not a picture or a video Tessaro can play, or it is damaged (%2).</source>
        <translation>The camera file “%1” is not a picture or a video Tessaro can play, or it is damaged (%2).</translation>
    </message>
    <message id="camfile_video_holds_no_picture">
        <source>The video “%1” holds no picture Tessaro can show; it may be cut short.</source>
        <translation>The video “%1” holds no picture Tessaro can show; it may be cut short.</translation>
    </message>
    <message id="camfile_picture_cannot_decoded_may">
        <source>The picture “%1” cannot be decoded; it may be cut short (%2).</source>
        <translation>The picture “%1” cannot be decoded; it may be cut short (%2).</translation>
    </message>
    <message id="writer_tessaro_cannot_record_gstreamer">
        <source>Tessaro cannot record: the GStreamer element “%1” is not installed.</source>
        <translation>Tessaro cannot record: the GStreamer element “%1” is not installed.</translation>
    </message>
    <message id="writer_camera_s_picture_format">
        <source>The camera’s picture format cannot be recorded.</source>
        <translation>The camera’s picture format cannot be recorded.</translation>
    </message>
    <message id="writer_tessaro_cannot_record_no">
        <source>Tessaro cannot record: no H.264 video encoder is installed (the package gstreamer1.0-plugins-ugly has one).</source>
        <translation>Tessaro cannot record: no H.264 video encoder is installed (the package gstreamer1.0-plugins-ugly has one).</translation>
    </message>
    <message id="writer_tessaro_cannot_record_camera">
        <source>Tessaro cannot record the camera’s %1×%2 pictures.</source>
        <translation>Tessaro cannot record the camera’s %1×%2 pictures.</translation>
    </message>
    <message id="writer_recording_could_not_start">
        <source>The recording to “%1” could not start: %2</source>
        <translation>The recording to “%1” could not start: %2</translation>
    </message>
    <message id="input_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>The camera “%1” is no longer connected.</translation>
    </message>
    <message id="input_tessaro_may_not_use">
        <source>Tessaro may not use the camera “%1” (%2): permission denied. Allow camera access, or add your user to the “video” group.</source>
        <translation>Tessaro may not use the camera “%1” (%2): permission denied. Allow camera access, or add your user to the “video” group.</translation>
    </message>
    <message id="input_camera_use_another_program">
        <source>The camera “%1” is in use by another program.</source>
        <translation>The camera “%1” is in use by another program.</translation>
    </message>
    <message id="input_camera_cannot_opened">
        <source>The camera “%1” cannot be opened: %2.</source>
        <translation>The camera “%1” cannot be opened: %2.</translation>
    </message>
    <message id="virtual_virtual_front_camera">
        <source>Virtual front camera</source>
        <translation>Virtual front camera</translation>
    </message>
    <message id="virtual_virtual_back_camera">
        <source>Virtual back camera</source>
        <translation>Virtual back camera</translation>
    </message>
    <message id="player_clip_cannot_played_gstreamer">
        <source>The clip cannot be played: GStreamer's playback elements are missing.</source>
        <translation>The clip cannot be played: GStreamer's playback elements are missing.</translation>
    </message>
    <message id="player_clip_cannot_played">
        <source>The clip “%1” cannot be played: %2</source>
        <translation>The clip “%1” cannot be played: %2</translation>
    </message>
    <message id="virtual_virtual_microphone">
        <source>Virtual microphone</source>
        <translation>Virtual microphone</translation>
    </message>
    <message id="devices_camera_not_there_using">
        <source>The camera “%1” is not there; using the default camera instead.</source>
        <translation>The camera “%1” is not there; using the default camera instead.</translation>
    </message>
    <message id="device_camera_no_longer_connected">
        <source>The camera “%1” is no longer connected.</source>
        <translation>The camera “%1” is no longer connected.</translation>
    </message>
    <message id="error_no_capture_device_requested">
        <source>No capture device of the requested kind was found.</source>
        <translation>No capture device of the requested kind was found.</translation>
    </message>
    <message id="photo_camera_not_running">
        <source>The camera is not running, so no photo was taken.</source>
        <translation>The camera is not running, so no photo was taken.</translation>
    </message>
    <message id="photo_camera_stopped_before">
        <source>The camera stopped before the photo was taken.</source>
        <translation>The camera stopped before the photo was taken.</translation>
    </message>
    <message id="photo_not_encoded">
        <source>The photo could not be encoded as JPEG.</source>
        <translation>The photo could not be encoded as JPEG.</translation>
    </message>
    <message id="photo_no_camera_could_opened">
        <source>No camera could be opened, so no photo was taken.</source>
        <translation>No camera could be opened, so no photo was taken.</translation>
    </message>
    <message id="photo_faces_no_model">
        <source>Faces: no face model is installed (the package opencv-data), so none are looked for.</source>
        <translation>Faces: no face model is installed (the package opencv-data), so none are looked for.</translation>
    </message>
    <message id="photo_faces_not_in_time">
        <source>Faces: the detector gave no answer within %1 seconds; the photo is taken anyway.</source>
        <translation>Faces: the detector gave no answer within %1 seconds; the photo is taken anyway.</translation>
    </message>
    <message id="photo_none_came_within">
        <source>No photo came from the camera within %1 seconds.</source>
        <translation>No photo came from the camera within %1 seconds.</translation>
    </message>
    <message id="photo_no_photo_taken">
        <source>No photo was taken: %1</source>
        <translation>No photo was taken: %1</translation>
    </message>
    <message id="photo_size_pixels_shown">
        <source>Size: %1×%2 pixels, shown as %3×%4 (EXIF orientation %5).</source>
        <translation>Size: %1×%2 pixels, shown as %3×%4 (EXIF orientation %5).</translation>
    </message>
    <message id="photo_flash_fired">
        <source>Flash: fired.</source>
        <translation>Flash: fired.</translation>
    </message>
    <message id="photo_faces_none">
        <source>Faces: none found.</source>
        <translation>Faces: none found.</translation>
    </message>
    <message id="photo_face_left_top_width">
        <source>Face %1: left %2, top %3, width %4, height %5 (fractions of the camera's picture).</source>
        <translation>Face %1: left %2, top %3, width %4, height %5 (fractions of the camera's picture).</translation>
    </message>
    <message id="cli_photo_one_still_without">
        <source>Take one photo without a display, with the options marked photo:, and print where it is.</source>
        <translation>Take one photo without a display, with the options marked photo:, and print where it is.</translation>
    </message>
    <message id="cli_photo_resolution">
        <source>photo: crop and scale the photo to WxH pixels as it is seen, such as 1080x1920 (default: as the camera takes it).</source>
        <translation>photo: crop and scale the photo to WxH pixels as it is seen, such as 1080x1920 (default: as the camera takes it).</translation>
    </message>
    <message id="cli_photo_faces">
        <source>photo: look for faces first and print their rectangles.</source>
        <translation>photo: look for faces first and print their rectangles.</translation>
    </message>
    <message id="cli_resolution_takes_wxh">
        <source>--resolution takes a size WxH from 1x1 to %1x%1, such as 1080x1920, not "%2".</source>
        <translation>--resolution takes a size WxH from 1x1 to %1x%1, such as 1080x1920, not "%2".</translation>
    </message>
    <message id="cli_photo_zoom_takes">
        <source>--zoom takes a zoom from 1 to %1 for a photo, such as 2.5, not "%2".</source>
        <translation>--zoom takes a zoom from 1 to %1 for a photo, such as 2.5, not "%2".</translation>
    </message>
    <message id="cli_photo_takes_options_only">
        <source>photo takes options only, not "%1".</source>
        <translation>photo takes options only, not "%1".</translation>
    </message>
</context>
</TS>
