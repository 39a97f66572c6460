#pragma once

class ImageCapture;
class wRecordingDialog;

/// Connects the recording dialog of a display with its acquisition worker: settings and commands reach the
/// worker at once, in the caller's thread; counters and texts come back through the event loop.
void wireRecording(ImageCapture* worker, wRecordingDialog* dialog);
