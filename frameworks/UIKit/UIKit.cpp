// The names of the notifications that tell of an application's way to the background and back. Linux has no
// framework that exports them: this one lets code that looks them up at run time find the same names
// everywhere. Whoever knows when the application goes posts them.

extern "C" {

extern const char* const UIApplicationDidEnterBackgroundNotification;
extern const char* const UIApplicationWillEnterForegroundNotification;

const char* const UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
const char* const UIApplicationWillEnterForegroundNotification =
    "UIApplicationWillEnterForegroundNotification";
}
