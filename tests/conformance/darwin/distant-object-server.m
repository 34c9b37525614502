// Registers an object under the name that is its argument, says so with a line on standard output, and serves
// until it is ended or its standard input closes.
#import <Foundation/Foundation.h>

@interface InputWatcher : NSObject
@end

@implementation InputWatcher

- (void)inputClosed:(NSNotification*)notification {
    (void)notification;
    exit(0);
}

@end

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSFileHandle* input = [NSFileHandle fileHandleWithStandardInput];
    InputWatcher* watcher = [[InputWatcher alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:watcher
                                             selector:@selector(inputClosed:)
                                                 name:NSFileHandleReadToEndOfFileCompletionNotification
                                               object:input];
    [input readToEndOfFileInBackgroundAndNotify];
    NSConnection* connection = [[NSConnection alloc] init];
    [connection setRootObject:watcher];
    if (![connection registerName:[NSString stringWithUTF8String:argv[1]]]) {
        return 1;
    }
    printf("registered\n");
    fflush(stdout);
    [[NSRunLoop currentRunLoop] run];
    [pool release];
    return 0;
}
