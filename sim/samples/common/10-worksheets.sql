-- Sheets on which a sample headend is written down with one line per thing. They last only while
-- the databases are made: 40-expand.sql turns their lines into the rows of the device's tables.
-- "module" is the id of a line of "rack"; codes are those of the tables that they end up in.

CREATE TEMP TABLE setting (name, value);

CREATE TEMP TABLE rack (
    id, mac, host, label, network, family, model, master, hardware, serial, attenuation, rf_mode);

CREATE TEMP TABLE satellite (
    module, input, active, onid, tsid, mhz, symbol_rate, diseqc, band, loop, locked, quality);

CREATE TEMP TABLE terrestrial (
    module, input, active, onid, tsid, khz, bandwidth, hierarchy, plp, locked, quality);

CREATE TEMP TABLE cable (
    module, input, active, onid, tsid, khz, symbol_rate, constellation, locked, quality);

CREATE TEMP TABLE output (
    module, output, onid, tsid, khz, on_air, bandwidth, guard, constellation, code_rate, spectrum);

CREATE TEMP TABLE lineup (module, output, sid, input, osid, lcn, type, streams, decrypt, name);

CREATE TEMP TABLE cam (module, card_status, card_serial, serial, version, rights_hours);

CREATE TEMP TABLE firmware (module, version);

-- Services that are not listed here are descrambled without trouble.
CREATE TEMP TABLE service_state (sid, bits);

-- The elementary streams of a service, by the name that the line-up gives. A NULL language stands
-- for the headend's first preferred one.
CREATE TEMP TABLE stream (streams, ordering, type, pid, language);

INSERT INTO stream VALUES
    ('sd',    1,   2, 0, ''),
    ('sd',    2,   3, 1, NULL),
    ('sd',    3,   6, 5, NULL),
    ('hd',    1,  27, 0, ''),
    ('hd',    2,   4, 1, NULL),
    ('hd',    3, 129, 3, NULL),
    ('dual',  1,  27, 0, ''),
    ('dual',  2,   4, 1, NULL),
    ('dual',  3,   4, 2, 'eng'),
    ('dual',  4,   6, 5, NULL),
    ('radio', 1,   3, 1, NULL),
    ('radio', 2,   5, 7, '');
