// The names of the notifications that the application has gone to the background and comes back. On
// Linux no framework of the system exports them; this one does, so that code which looks them up at
// run time finds them everywhere. The host application posts the notifications.

extern "C" {

extern const char* const UIApplicationDidEnterBackgroundNotification;
extern const char* const UIApplicationWillEnterForegroundNotification;

const char* const UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
const char* const UIApplicationWillEnterForegroundNotification =
    "UIApplicationWillEnterForegroundNotification";
}
