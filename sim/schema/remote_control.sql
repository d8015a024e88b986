-- Commands of the remote-control server that wait, run, or wait for their result to be sent.

CREATE TABLE RCCommand (
    id        INTEGER PRIMARY KEY,
    commandId INTEGER,
    status    INTEGER,
    nextTime  INTEGER,
    schedule  TEXT,
    command   TEXT,
    result    TEXT
);
