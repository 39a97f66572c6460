#pragma once

/// Lets the calling thread give way, for good, to the threads that a person or a camera waits for; more calls
/// do nothing more. For the threads of Qt's pool, where all work is the writing of files: an encoder there
/// would otherwise hold up the window and the taking of images. What such a thread starts inherits this.
void giveWayToLiveThreads();
