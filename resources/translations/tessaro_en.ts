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
</context>
</TS>
