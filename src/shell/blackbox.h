#ifndef BV_SHELL_BLACKBOX_H
#define BV_SHELL_BLACKBOX_H

// The event log, Data/blackbox.bvd: one line per start-up step, loader and
// console command, and a closing verdict. The file is opened and closed for
// every line so that everything written before a crash is on disk.
struct sBlackbox {
    char file[255];
    char last_task[256];    // the most recent task's text (a copy, cut to fit); empty after init
    bool console;           // echo every line to standard output
    bool status;            // true until a task fails

    void init(const char* path, bool console);
    void task(const char* text, bool ok);
    void consoletask(const char* text, bool ok);
    void msg(const char* text);
    void date();
    void systemInfo();
    void rendererInfo();
    void free();

private:
    void write(const char* text);
};

extern sBlackbox blackbox;

#endif
