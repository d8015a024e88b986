#!/usr/bin/python3
"""Checks the runner and the samples: python3 sim/selftest.py"""

import os
import signal
import subprocess
import tempfile
import time
import unittest
from contextlib import closing
from pathlib import Path

from device import DATABASES, SIM, Device, LogLine, SimError, models

RUN = SIM / "run"

COLUMNS = {
    "config_global": {
        "configuracionWebGlobal": 4,
        "MantenimientoHomeChannelsGlobal": 9,
        "RedesCabecera": 22,
        "RedesModulos": 17,
        "DiSEqCGlobal": 7,
        "AudioLanguageListGlobal": 2,
        "ScramblingGlobal": 4,
        "ScramblingKeysGlobal": 11,
        "NimGlobal": 15,
        "NimCOFDMGlobal": 13,
        "NimQAMGlobal": 9,
        "EntradasGlobal": 9,
        "SalidasLogicasGlobal": 9,
        "RFOutGlobal": 14,
        "ServiciosSalidaGlobal": 28,
        "PIDsSalidaGlobal": 11,
        "Service_EPG": 12,
        "Service_EPG_audios": 5,
        "Service_EPG_replacing": 4,
        "Service_EPG_Satellite": 9,
    },
    "temp_global": {
        "ServiciosEntradaGlobal": 19,
        "ModulosCabecera": 31,
        "CAMInfoGlobal": 36,
        "TempNIMGlobal": 19,
        "TempNIMCOFDMGlobal": 12,
        "TempNIMQAMGlobal": 14,
    },
    "vsec_global": {"VSecure": 10},
    "remote_control": {"RCCommand": 7},
}

# The others have a service of each kind.
WHOLE_LINE_UP = "QRA-310"

# Their configuration holds nothing that an import of it would refuse.
SOUND_MODELS = ("LMV-502", "QRA-310", "RNB-K408", "WVX-AQ4", "WVX-BQ4")

# Each query finds what an import would refuse, or what the device would never write.
FAULTS = {
    "an intermediate frequency outside the tuner's range": """
        SELECT * FROM NimGlobal WHERE Frequency NOT BETWEEN 950 AND 2150""",
    "an intermediate frequency that is not the received one less the oscillator's": """
        SELECT * FROM NimGlobal WHERE Frequency <> fe - (
            SELECT valor FROM configuracionWebGlobal
            WHERE nombre = iif(banda_FI = 1, 'LNB_fa', 'LNB_fb'))""",
    "a band that is not that of the tuner's DiSEqC position": """
        SELECT * FROM NimGlobal JOIN DiSEqCGlobal ON Posicion = DiSEqC WHERE Banda <> banda_FI""",
    "a looped tuner on another position or band than the first": """
        SELECT * FROM NimGlobal a JOIN NimGlobal b USING (MAC)
        JOIN EntradasGlobal e ON e.idEntradasGlobal = b.fk_idEntradasGlobal
        WHERE tipoEntrada = 0 AND a.fk_idNim = 1 AND b.fk_idNim = 2 AND b.RFIN_LOOP = 1
        AND (a.DiSEqC <> b.DiSEqC OR a.banda_FI <> b.banda_FI)""",
    "an input that has not one tuner of each kind, awake when the input is active": """
        SELECT * FROM EntradasGlobal
        LEFT JOIN (SELECT fk_idEntradasGlobal AS id, group_concat(STANDBY, '') AS standby
                   FROM (SELECT fk_idEntradasGlobal, STANDBY FROM NimGlobal
                         UNION ALL SELECT fk_idEntradasGlobal, STANDBY FROM NimCOFDMGlobal
                         UNION ALL SELECT fk_idEntradasGlobal, STANDBY FROM NimQAMGlobal)
                   GROUP BY 1) ON id = idEntradasGlobal
        WHERE tipoEntrada NOT IN (0, 1, 2) OR standby IS NOT iif(Activo, '000', '111')""",
    "a module without two inputs and two outputs": """
        SELECT * FROM RedesModulos m
        WHERE (SELECT count(*) FROM EntradasGlobal e WHERE e.MAC = m.MAC) <> 2
        OR (SELECT count(*) FROM SalidasLogicasGlobal s WHERE s.MAC = m.MAC) <> 2
        OR (SELECT count(*) FROM RFOutGlobal r WHERE r.MAC = m.MAC) <> 2""",
    "an output code outside its table": """
        SELECT * FROM RFOutGlobal JOIN RedesModulos USING (MAC)
        WHERE Ancho_Banda NOT IN (0, 1, 2) OR Modo_OFDM NOT IN (0, 1)
        OR Intervalo_Guarda NOT IN (0, 1, 2, 3) OR Code_Rate NOT IN (0, 1, 2, 3, 4)
        OR Espectro_Salida NOT IN (0, 1)
        OR Constelacion NOT BETWEEN 0 AND iif(ModoSalidaRF = 0, 2, 4)""",
    "an input code outside its table": """
        SELECT 1 FROM NimCOFDMGlobal WHERE Bandwidth NOT IN (0, 1, 2) OR Hierarchy NOT IN (0, 1)
        UNION ALL SELECT 1 FROM NimGlobal WHERE banda_FI NOT IN (0, 1) OR ModoPLS <> 0
        UNION ALL SELECT 1 FROM DiSEqCGlobal
        WHERE Polaridad NOT IN (0, 1) OR Banda NOT IN (0, 1)""",
    "a service without a channel number or with an identifier out of range": """
        SELECT * FROM ServiciosSalidaGlobal
        WHERE LCN < 1 OR SID NOT BETWEEN 1 AND 65535 OR OSID NOT BETWEEN 1 AND 65535
        OR fk_idSalidasLogicas NOT IN (1, 2)""",
    "two services with one identifier on an output": """
        SELECT MAC, fk_idSalidasLogicas, SID FROM ServiciosSalidaGlobal
        GROUP BY 1, 2, 3 HAVING count(*) > 1""",
    "two streams of a service that cannot be told apart": """
        SELECT fk_idSSG, AudioCode, StreamId, Tipo FROM PIDsSalidaGlobal
        GROUP BY 1, 2, 3, 4 HAVING count(*) > 1""",
    "an EPG number out of range": """
        SELECT * FROM Service_EPG WHERE ONID NOT BETWEEN 1 AND 65535
        OR TSID NOT BETWEEN 1 AND 65535 OR SID NOT BETWEEN 1 AND 65535
        OR LCN NOT BETWEEN 1 AND 65535""",
    "a network with an impossible NIT pattern": """
        SELECT * FROM RedesCabecera WHERE Tipo_NIT_Patron NOT IN (0, 1)
        OR (Tipo_NIT_Patron = 0 AND NIT_Patron NOT IN (0, 1))
        OR (NIT_Patron = 0 AND Version_NIT_Patron <> 0)""",
    "anything but one scrambling system": """
        SELECT 1 WHERE (SELECT count(*) FROM ScramblingGlobal) <> 1
        OR (SELECT group_concat(System || Mode) FROM ScramblingKeysGlobal)
            NOT IN ('VSecure0', 'VSecure1', 'VSecure2')""",
}


class DeviceTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="sim-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def device(self, model: str = "QRA-310") -> Device:
        return Device.create(model, self.folder / "device")


class Samples(DeviceTest):
    def test_every_sample_has_the_tables_of_the_device(self) -> None:
        self.assertEqual(len(models()), 7)
        for model in models():
            device = Device.create(model, self.folder / model)
            for database, tables in COLUMNS.items():
                with closing(device.database(DATABASES[database])) as connection:
                    found = connection.execute(
                        "SELECT name, (SELECT count(*) FROM pragma_table_info(sqlite_master.name))"
                        " FROM sqlite_master WHERE type = 'table'"
                    ).fetchall()
                with self.subTest(model=model, database=database):
                    self.assertEqual(dict(found), tables)

    def test_every_sample_is_a_whole_headend(self) -> None:
        for model in models():
            rows = Device.create(model, self.folder / model).dump(DATABASES["config_global"])
            with self.subTest(model=model):
                self.assertIn(len(rows["RedesModulos"]), range(3, 6))
                services = len(rows["ServiciosSalidaGlobal"])
                self.assertIn(services, (40,) if model == WHOLE_LINE_UP else range(8, 13))
                self.assertGreater(len(rows["PIDsSalidaGlobal"]), 2 * services)

    def test_the_master_module_is_the_device_itself(self) -> None:
        for model in models():
            device = Device.create(model, self.folder / model)
            with closing(device.database(DATABASES["config_global"])) as connection:
                master = connection.execute(
                    "SELECT MAC, NumeroSerie FROM RedesModulos WHERE Master = 1"
                ).fetchall()
            values = [
                device.path(f"/tarvo/sim/values/{name}").read_text().strip()
                for name in ("MAC", "SERIAL", "MODELO")
            ]
            with self.subTest(model=model):
                self.assertEqual([*master, model], [tuple(values[:2]), values[2]])

    def test_sound_samples_hold_nothing_that_an_import_refuses(self) -> None:
        for model in SOUND_MODELS:
            device = Device.create(model, self.folder / model)
            with closing(device.database(DATABASES["config_global"])) as connection:
                for fault, query in FAULTS.items():
                    with self.subTest(model=model, fault=fault):
                        self.assertEqual(connection.execute(query).fetchall(), [])

    def test_si_tables_have_their_bytes_and_their_time(self) -> None:
        table = self.device().path("/tarvo/datosWeb/tablasSI/NIT_table_12345")
        self.assertEqual((table.read_bytes()[21] >> 1) & 31, 5)
        self.assertEqual(time.gmtime(table.stat().st_mtime)[:6], (2024, 3, 12, 4, 30, 0))


class Running(DeviceTest):
    def test_the_program_is_root_on_the_device(self) -> None:
        script = "id -u; hostname; pwd; cat /tarvo/conf/timezone/localtime"
        result = self.device("WVX-AQ4").run("sh", ["-c", script])
        self.assertEqual(result.stdout, b"0\nwvx-aq4-alpes\n/run/cwd\nUTC\n")
        self.assertEqual((result.status, result.stderr), (0, b""))

    def test_the_host_is_out_of_reach(self) -> None:
        probe = self.folder / "probe"
        probe.touch()
        result = self.device().run("sh", ["-c", f"ls {probe} /root /home; touch /usr/x x; ls /etc"])
        self.assertNotIn(b"passwd", result.stdout)
        self.assertEqual(result.stderr.count(b"\n"), 5)

    def test_identity_scripts_answer_with_the_value_and_ok(self) -> None:
        device = self.device("PKD-707")
        values = {"SERIAL": b"PK140300001", "MAC": b"02:1E:70:77:00:1C", "MODELO": b"PKD-707"}
        for name, value in values.items():
            self.assertEqual(device.run(f"/tarvo/script/{name}").stdout, value + b"\nOK\n")

    def test_the_status_is_the_programs(self) -> None:
        device = self.device()
        self.assertEqual(device.run("sh", ["-c", "exit 7"]).status, 7)
        self.assertEqual(device.run("sh", ["-c", "kill -ABRT $$"]).status, 128 + signal.SIGABRT)

    def test_only_the_given_environment_is_seen(self) -> None:
        result = self.device().run("env", env={"TZ": "Asia/Tokyo", "EXTRA": "a b=c"})
        names = {line.split(b"=")[0] for line in result.stdout.splitlines()}
        self.assertLessEqual(names, {b"PATH", b"LANG", b"TZ", b"EXTRA", b"PWD"})
        self.assertIn(b"\nEXTRA=a b=c\n", result.stdout)
        self.assertIn(b"TZ=Asia/Tokyo\n", result.stdout)

    def test_a_program_comes_with_the_folder_beside_its_own(self) -> None:
        (self.folder / "build/bin").mkdir(parents=True)
        (self.folder / "build/lib").mkdir()
        (self.folder / "build/lib/text").write_text("beside")
        program = self.folder / "build/bin/program"
        program.write_text('#!/bin/sh\ncat "${0%/*}/../lib/text" document "$@"\n')
        program.chmod(0o755)
        (self.folder / "document").write_text(" document")
        device = self.device()
        device.path("/tmp/of device").write_text(" argument")
        result = device.run(program, ["/tmp/of device"], cwd=self.folder)
        self.assertEqual(result.stdout, b"beside document argument")

    def test_an_emulator_runs_a_program_that_is_brought_in_and_no_other(self) -> None:
        (self.folder / "sysroot").mkdir()
        (self.folder / "sysroot/text").write_text("of the other machine")
        (self.folder / "build/bin").mkdir(parents=True)
        program = self.folder / "build/bin/program"
        program.write_text("#!/bin/sh\ncat text\n")
        program.chmod(0o755)
        device = Device(self.device().root, emulator=["env", "-C", str(self.folder / "sysroot")])
        self.assertEqual(device.run(program).stdout, b"of the other machine")
        self.assertEqual(device.run("pwd").stdout, b"/run/cwd\n")

    def test_a_missing_emulator_is_one_sentence(self) -> None:
        (self.folder / "bin").mkdir()
        program = self.folder / "bin/program"
        program.touch(mode=0o755)
        device = Device(self.device().root, emulator=["no-such-emulator"])
        with self.assertRaisesRegex(SimError, "^the emulator 'no-such-emulator' is missing; "):
            device.run(program)

    def test_syslog_messages_keep_their_priority_and_text(self) -> None:
        script = (
            "import syslog; syslog.syslog(3, 'fault\\n');"
            "syslog.syslog(61, 'REMOTE_CONTROL::: a\\\\b: ñ');"
            "syslog.syslog(59, 'r9::: Error 1, x')"
        )
        device = self.device()
        result = device.run("/usr/bin/python3", ["-c", script])
        self.assertEqual(
            result.syslog,
            [
                LogLine(11, "fault\n"),
                LogLine(61, "REMOTE_CONTROL::: a\\b: ñ"),
                LogLine(59, "r9::: Error 1, x"),
            ],
        )
        self.assertEqual(
            device.path("/syslog").read_text("utf-8"),
            "<11> fault\\n\n<61> REMOTE_CONTROL::: a\\\\b: ñ\n<59> r9::: Error 1, x\n",
        )

    def test_no_syslog_message_is_lost(self) -> None:
        script = "import syslog\nfor n in range(2000): syslog.syslog(str(n))"
        result = self.device().run("/usr/bin/python3", ["-c", script])
        self.assertEqual([line.message for line in result.syslog], [str(n) for n in range(2000)])

    def test_a_long_device_folder_has_a_syslog_too(self) -> None:
        device = Device.create("QRA-310", self.folder / ("long" * 30) / ("folder" * 20))
        script = "import syslog; syslog.syslog('here')"
        result = device.run("/usr/bin/python3", ["-c", script])
        self.assertEqual(result.syslog, [LogLine(14, "here")])

    def test_actions_are_noted_and_end_as_asked(self) -> None:
        device = self.device()
        device.path("/tarvo/sim/exit/VSecKey").write_text("3\n")
        result = device.run(
            "sh",
            [
                "-c",
                "/tarvo/script/WAN_from_DB.sh; /etc/init.d/S60crond restart;"
                ' /tarvo/script/get_time_offsets.sh 0 "Europe/Madrid" "Africa/Ceuta";'
                " /tarvo/bin/VSecKey keys.txt",
            ],
        )
        self.assertEqual(result.status, 3)
        self.assertEqual(
            result.actions,
            [
                "WAN_from_DB.sh",
                "S60crond restart",
                "get_time_offsets.sh 0 Europe/Madrid Africa/Ceuta",
                "VSecKey keys.txt",
            ],
        )
        self.assertEqual(
            device.path("/tmp/temp_tot_file_web").read_text(),
            "offset of Europe/Madrid\noffset of Africa/Ceuta\n",
        )
        self.assertEqual(device.run("true").actions, [])

    def test_a_killed_program_is_dead_and_reported(self) -> None:
        running = self.device().start("sleep", ["600"])
        running.kill()
        self.assertEqual(running.wait(timeout=60).status, 128 + signal.SIGKILL)

    def test_a_program_that_takes_too_long_is_ended(self) -> None:
        device = self.device()
        with self.assertRaises(subprocess.TimeoutExpired):
            device.run("sleep", ["60"], timeout=0.1)
        self.assertEqual(device.run("ls", ["/tmp"]).status, 0)
        self.assertEqual(list(device.root.glob("log-*")), [])

    def test_a_folder_that_is_in_use_is_left_alone(self) -> None:
        (self.folder / "mine").touch()
        with self.assertRaises(SimError):
            Device.create("QRA-310", self.folder)
        self.assertEqual(os.listdir(self.folder), ["mine"])


class Runner(DeviceTest):
    def call(self, *words: str, **options: object) -> subprocess.CompletedProcess[bytes]:
        return subprocess.run(
            [RUN, *words], capture_output=True, check=False, timeout=30, **options
        )

    def assert_refused(self, result: subprocess.CompletedProcess[bytes], reason: str) -> None:
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertRegex(result.stderr.decode(), rf"\Asim/run: .*{reason}.*\n\Z")

    def test_the_programs_streams_and_status_pass_through(self) -> None:
        words = ("--model", "QRA-310", "--setenv", "A=1", "--", "sh", "-c")
        result = self.call(*words, 'cat; echo "$A $0" >&2; exit 9', "--list", input=b"in\n")
        self.assertEqual((result.returncode, result.stdout), (9, b"in\n"))
        self.assertEqual(result.stderr, b"1 --list\n")

    def test_a_named_folder_is_made_once_and_then_used_as_it_is(self) -> None:
        root = str(self.folder / "kept")
        self.call("--model", "RNB-K408", "--root", root, "--", "sh", "-c", "echo 1 >/tmp/mark")
        result = self.call("--root", root, "--", "cat", "/tmp/mark")
        self.assertEqual(result.stdout, b"1\n")
        result = self.call("--root", root, "--model", "QRA-310", "--", "true")
        self.assert_refused(result, "RNB-K408")

    def test_a_passing_device_leaves_nothing_behind(self) -> None:
        environment = {"TMPDIR": str(self.folder), "PATH": os.environ["PATH"]}
        result = self.call("--model", "QRA-310", "--", "true", env=environment)
        self.assertEqual((result.returncode, os.listdir(self.folder)), (0, []))

    def test_the_models_are_listed(self) -> None:
        self.assertEqual(self.call("--list").stdout.decode().split(), models())

    def test_usage_faults_are_one_sentence(self) -> None:
        self.assert_refused(self.call("--model", "XYZ-1", "--", "true"), "XYZ-1")
        self.assert_refused(self.call("--", "true"), "--model")
        self.assert_refused(self.call("--model", "QRA-310"), "no program")
        self.assert_refused(self.call("--model", "QRA-310", "--", "./no-such"), "no-such")
        self.assert_refused(self.call("--model", "QRA-310", "--", "no-such"), "no-such")
        self.assert_refused(self.call("--model", "QRA-310", "--color", "--", "true"), "--color")
        self.assert_refused(self.call("--root", str(SIM), "--", "true"), "new or empty folder")

    def test_a_folder_that_cannot_hold_a_device_is_one_sentence(self) -> None:
        (self.folder / "file").touch()
        for root in ("/proc/device", "/dev/null/device", str(self.folder / "file" / "device")):
            result = self.call("--model", "QRA-310", "--root", root, "--", "true")
            self.assert_refused(result, root)

    def test_a_folder_keeps_its_mode(self) -> None:
        root = self.folder / "private"
        root.mkdir(mode=0o700)
        self.call("--model", "QRA-310", "--root", str(root), "--", "true")
        self.assertEqual(root.stat().st_mode & 0o777, 0o700)

    def test_missing_bubblewrap_is_one_sentence(self) -> None:
        result = self.call("--model", "QRA-310", "--", "true", env={"PATH": ""})
        self.assert_refused(result, "apt-get install bubblewrap")

    def test_forbidden_namespaces_are_one_sentence(self) -> None:
        fake = self.folder / "bwrap"
        fake.write_text("#!/bin/sh\necho 'bwrap: no permission' >&2\nexit 1\n")
        fake.chmod(0o755)
        result = self.call("--model", "QRA-310", "--", "true", env={"PATH": str(self.folder)})
        self.assert_refused(result, r"\(no permission\).*unprivileged_userns_clone")

    def test_the_program_dies_with_the_runner(self) -> None:
        # Bubblewrap starts the program before it binds its own life to the runner's. Then it waits.
        program = 'until grep -q "^State:.S" /proc/1/status; do :; done; echo; sleep 600'
        for number in (signal.SIGKILL, signal.SIGTERM):
            command = [RUN, "--root", self.folder / "kept", "--model", "QRA-310", "--"]
            with subprocess.Popen([*command, "sh", "-c", program], stdout=-1) as runner:
                runner.stdout.readline()
                runner.send_signal(number)
                self.assertEqual(runner.communicate(timeout=60), (b"", None))


if __name__ == "__main__":
    unittest.main()
