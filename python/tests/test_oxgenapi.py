"""The package against the simulated camera. OXGENAPI_LIBRARY_PATH names the folder with the libraries."""

import gc
import json
import os
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zipfile
from pathlib import Path

import oxgenapi
from oxgenapi import Access, Code, Error, NodeMap, NodeType, SimulatedCamera, VerifyMode


def outcome(call):
    """The Error that a call raises."""
    try:
        call()
    except Error as error:
        return error
    return None


class CameraTest(unittest.TestCase):
    def setUp(self):
        self.device = SimulatedCamera()
        self.cam = NodeMap.of(self.device)
        self.addCleanup(self.device.close)
        self.addCleanup(self.cam.close)

    def assertFails(self, code, call, *arguments):
        with self.assertRaises(Error) as caught:
            call(*arguments)
        self.assertEqual(caught.exception.code, code, caught.exception)
        return caught.exception


class Values(CameraTest):
    def test_every_kind_reads_back_what_was_written(self):
        for name, value in [("ExposureTime", 5000.0), ("Width", 320), ("PixelFormat", "Mono8"), ("ReverseX", True),
                            ("DeviceUserID", "Größe 5"), ("TestSigned64", -(1 << 63))]:
            with self.subTest(name):
                node = self.cam[name]
                node.value = value
                self.assertEqual(node.value, value)
                self.assertIs(type(node.value), type(value))

    def test_what_is_written_is_what_was_meant_or_refused(self):
        class Index:
            def __index__(self): return 320

        class Real:
            def __float__(self): return 64.0

        bool_ = type("bool_", (), {"__bool__": lambda self: True})
        register = bytes(range(16))
        written = [("Width", Index(), 320), ("Width", Real(), 64), ("ExposureTime", Index(), 320.0), ("ReverseX", bool_(), True),
                   ("TestRegister", register, register), ("TestRegister", memoryview(bytearray(16)), bytes(16)),
                   ("PixelFormat", Index, TypeError), ("Width", 320.5, ValueError), ("Width", float("nan"), ValueError),
                   ("Width", None, TypeError), ("Width", b"12", TypeError), ("Width", [64], TypeError),
                   ("TestSigned64", 1 << 63, OverflowError), ("DeviceUserID", "a\0b", ValueError)]
        try:
            import numpy
            written += [("Width", numpy.int32(64), 64), ("Width", numpy.uint16(96), 96), ("ReverseX", numpy.bool_(False), False),
                        ("ExposureTime", numpy.float32(20), 20.0), ("Width", numpy.arange(2), TypeError)]
        except ImportError:
            print("numpy's own numbers were not tried")
        for name, value, expected in written:
            with self.subTest(name, value=value):
                if isinstance(expected, type):
                    with self.assertRaises(expected):
                        self.cam[name].value = value
                else:
                    self.cam[name].value = value
                    self.assertEqual(self.cam[name].value, expected)
        with self.assertRaises(AttributeError):
            self.cam.Width.val = 3
        for name in ("TestSigned64", "ReverseX"):
            before = self.cam[name].value
            self.assertFails(Code.NOT_SUPPORTED, self.cam[name].execute)
            self.assertEqual(self.cam[name].value, before)

    def test_commands_and_registers(self):
        before = self.cam.TestCommandCount.value
        self.cam.TestCommand.execute()
        self.assertEqual(self.cam.TestCommandCount.value, before + 1)
        port, register = self.cam.Device, self.cam.TestRegister
        port.write_memory(register.address, b"\x01\x02\x03\x04")
        register.invalidate()
        self.assertEqual(register.value[:4], b"\x01\x02\x03\x04")
        self.assertEqual(port.read_memory(register.address, 4), b"\x01\x02\x03\x04")

    def test_a_failure_has_code_text_and_feature(self):
        error = self.assertFails(Code.INVALID_ARGUMENT, setattr, self.cam.Width, "value", 1)
        self.assertEqual(error.feature, "Width")
        self.assertRegex(str(error), "^Width: .*16")
        self.assertFails(Code.NOT_WRITABLE, setattr, self.cam.DeviceVendorName, "value", "mine")
        self.assertFails(Code.NOT_PRESENT, self.cam.__getitem__, "NoSuchFeature")


class Discovery(CameraTest):
    def test_attributes_complete_and_unknown_ones_suggest(self):
        self.assertIn("ExposureTime", dir(self.cam))
        self.assertNotIn("WidthReg", dir(self.cam))
        self.assertIn("Width", self.cam._ipython_key_completions_())
        self.assertIs(self.cam.Width, self.cam.Width)
        with self.assertRaisesRegex(TypeError, "a feature's name is a str, not int"):
            self.cam[3]
        with self.assertRaisesRegex(TypeError, "read.*are wanted, int lacks them"):
            self.cam.connect(5)
        self.assertIn("unit", dir(self.cam.ExposureTime))
        self.assertIn("Width", self.cam)
        self.assertEqual(self.cam.settings("ReverseX"), self.cam.settings(["ReverseX"]))
        self.assertNotIn("Widht", self.cam)
        with self.assertRaisesRegex(AttributeError, "did you mean .*Width"):
            self.cam.Widht
        with self.assertRaisesRegex(AttributeError, r"Width.value = 5"):
            self.cam.Width = 5

    def test_repr_shows_value_unit_range_and_access(self):
        cam = self.cam
        cam.ExposureTime.value = 5000.0
        self.assertRegex(repr(cam.ExposureTime), r"^<ExposureTime = 5000.0 us, [\d.]+ .. [\d.]+, ReadWrite>$")
        self.assertRegex(repr(cam.Width), r"^<Width = \d+ px, 16 .. \d+ step 4, ReadWrite>$")
        self.assertRegex(repr(cam.ExposureAuto), r"Off\|.*ReadWrite>$")
        self.assertEqual(repr(cam.AcquisitionResultingFrameRate), "<AcquisitionResultingFrameRate = 25.0 Hz, ReadOnly>")
        self.assertEqual(repr(cam.TestCommand), "<TestCommand, Command, ReadWrite>")
        self.assertEqual(repr(cam), f"<NodeMap {cam.vendor} {cam.model}>")
        self.assertIn("No NodeMap", repr(NodeMap()))
        cam.DeviceUserID.value = "<b>"
        self.assertRegex(cam.DeviceUserID._repr_html_(), "<table>.*DeviceUserID.*&lt;b&gt;.*</table>")
        self.assertRegex(cam._repr_html_(), "(?s)<summary>Image Format Control</summary>.*<code>Width</code>")

    def test_relations_and_information(self):
        gain = self.cam.Gain
        self.assertEqual([node.name for node in gain.selecting], ["GainSelector"])
        self.assertIn("Gain", [node.name for node in self.cam.GainSelector.selected])
        self.assertEqual((gain.type, gain.access, gain.is_streamable), (NodeType.Float, Access.ReadWrite, True))
        self.assertIsNone(gain.increment)
        names = [node.name for node in self.cam]
        self.assertIn("Width", names)
        self.assertGreater(len(self.cam.node_names()), len(names))
        gain.verify_mode = VerifyMode.ReadWrite
        self.assertEqual(gain.verify_mode, VerifyMode.ReadWrite)
        records = json.loads(self.cam.to_json([self.cam.Width]))
        self.assertEqual(records[0]["Value"], str(self.cam.Width.value))

    def test_nodes_outlive_their_map_and_their_camera(self):
        width = self.cam.Width
        self.cam.close()
        self.device.close()
        gc.collect()
        width.value = 320
        self.assertEqual(width.value, 320)
        with self.assertRaises(ValueError):
            self.device.image()
        self.assertFails(Code.INVALID_HANDLE, self.cam.__getitem__, "Width")


class Ports(unittest.TestCase):
    class Refusing:
        def __init__(self, camera):
            self.camera, self.refusal, self.reads = camera, None, 0

        def read(self, address, length):
            self.reads += 1
            if self.refusal:
                raise self.refusal
            return self.camera.read(address, length)

        def write(self, address, data):
            self.camera.write(address, data)

    def test_a_device_in_python_answers_and_refuses(self):
        with SimulatedCamera() as camera, NodeMap() as cam:
            device = self.Refusing(camera)
            cam.load_text(camera.description)
            cam.connect(device)
            cam.Width.value = 640
            self.assertEqual(cam.Width.value, 640)
            self.assertGreater(device.reads, 0)
            for refusal, code in [(OSError("cable pulled"), Code.UNSPECIFIED),
                                  (Error(Code.ACCESS_DENIED, "cable pulled"), Code.NOT_READABLE)]:
                device.refusal = refusal
                cam.DeviceTemperature.invalidate()
                with self.assertRaisesRegex(Error, "cable pulled") as caught:
                    cam.DeviceTemperature.value
                self.assertEqual(caught.exception.code, code)
                self.assertIs(caught.exception.__cause__, refusal)
            device.refusal = KeyboardInterrupt()  # Ctrl-C must get past "except Error"
            cam.DeviceTemperature.invalidate()
            with self.assertRaises(KeyboardInterrupt):
                cam.DeviceTemperature.value
            device.refusal = None
            self.assertGreater(cam.DeviceTemperature.value, 0)


class Changes(CameraTest):
    def test_callbacks_run_until_they_are_closed(self):
        seen = []
        with self.cam.Width.on_update(lambda node: seen.append(node.value)):
            self.cam.Width.value = 320
        self.cam.Width.value = 640
        self.assertEqual(seen, [320])

        def interrupted(node):
            raise KeyboardInterrupt

        with self.cam.Width.on_update(interrupted), self.assertRaises(KeyboardInterrupt):
            self.cam.Width.value = 320

    def test_events_fill_features(self):
        cam = self.cam
        cam.EventSelector.value = "Test"
        cam.EventNotification.value = "On"
        cam.TestEventGenerate.execute()
        events = list(self.device.events())
        self.assertTrue(events)
        node = cam.EventTestTimestamp
        with node.on_update(lambda changed: updates.append(changed.name)):
            updates = []
            cam.deliver_event(events[-1].id, events[-1].payload)
            cam.deliver_event(f"{events[-1].id:x}", events[-1].payload)
        self.assertEqual(updates, [node.name] * 2)
        self.assertFails(Code.INVALID_ARGUMENT, cam.deliver_event, 1, b"")

    def test_chunks_are_read_in_place(self):
        cam = self.cam
        cam.ChunkModeActive.value = True
        cam.ChunkSelector.value = "ExposureTime"
        cam.ChunkEnable.value = True
        cam.ExposureTime.value = 1234.0
        cam.AcquisitionStart.execute()
        image = self.device.image()
        with cam.attach_chunks(image.data, image.chunks) as chunks:
            self.assertEqual(cam.ChunkExposureTime.value, 1234.0)
            with self.assertRaises(BufferError):
                image.data.append(0)  # held while it is attached
            chunks.update(bytes(len(image.data)))
            self.assertEqual(cam.ChunkExposureTime.value, 0)
            with self.assertRaises(ValueError):
                chunks.update(b"short")
        self.assertFalse(cam.ChunkExposureTime.readable)
        image.data.append(0)
        with self.assertRaises(ValueError):
            cam.attach_chunks(b"1234", [(0xA003, 0, 8)])

    def test_two_threads_two_cameras(self):
        failures = []

        def work():
            try:
                with SimulatedCamera() as device, NodeMap.of(device) as cam:
                    for width in range(16, 416, 4):
                        cam.Width.value = width
                        assert cam.Width.value == width
            except Exception as error:
                failures.append(error)

        threads = [threading.Thread(target=work) for _ in range(2)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])


class Keeping(CameraTest):
    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_settings_come_back(self):
        cam, path = self.cam, self.folder / "camera.settings"
        cam.Width.value = 320
        self.assertEqual(cam.save_settings(path, ["Width", "ExposureTime"]), [])
        cam.Width.value = 640
        self.assertEqual(cam.load_settings(path, validate=True), [])
        self.assertEqual(cam.Width.value, 320)
        self.assertEqual(cam.settings(["Width"]), 'Width = "320"\n')
        self.assertIn('Gain[GainSelector(All)] = "', cam.settings())

    def test_settings_problems_are_listed_and_may_stop(self):
        text = 'Width = "1"\nHeight = "240"\nNo line\n'
        problems = self.cam.load_settings_text(text)
        self.assertEqual([(problem.code, problem.feature) for problem in problems],
                         [(Code.INVALIDATE_FAILED, "Width"), (Code.DEVICE_FILE, "")])
        self.assertEqual(self.cam.Height.value, 240)
        self.cam.Height.value = 480
        self.assertFails(Code.INVALIDATE_FAILED, self.cam.load_settings_text, text, False, lambda problem: False)
        self.assertEqual(self.cam.Height.value, 480)
        with self.assertRaises(ZeroDivisionError):
            self.cam.load_settings_text(text, on_problem=lambda problem: 1 // 0)
        self.assertFails(Code.RUNTIME, self.cam.load_settings, self.folder / "missing")

    def test_files_go_up_and_come_down(self):
        name, content, path = "UserFile1", bytes(range(256)) * 40, self.folder / "file"
        self.cam.upload(name, content)
        self.assertEqual(self.cam.download(name), content)
        self.cam.download_file(name, path)
        self.assertEqual(path.read_bytes(), content)
        path.write_bytes(b"short")
        self.cam.upload_file(name, path)
        self.assertEqual(self.cam.download(name), b"short")
        self.assertFails(Code.INVALID_ARGUMENT, self.cam.upload, name, b"")

    def test_firmware_is_applied_and_the_device_reopened(self):
        path = self.folder / "camera.guf"
        path.write_bytes(b"not an update")
        self.assertFails(Code.RUNTIME, oxgenapi.FirmwareUpdater, path)

        package = self.folder / "package.zip"
        with zipfile.ZipFile(package, "w") as archive:
            archive.writestr("control.xml", """<?xml version='1.0'?>
                <FirmwareUpdateControl SchemaMajorVersion='1' SchemaMinorVersion='0'>
                <Update Procedure='Main'><Info Key='Version'>2.1.0</Info><Info Key='Description'>Wider</Info>
                <Condition Feature='DeviceModelName'>SC-200</Condition></Update>
                <Procedure Name='Main'><DeviceReset EstimatedDurationMs='0' DelayEnumerationMs='0'/>
                <FeatureWrite Feature='Width' Value='160'/></Procedure></FirmwareUpdateControl>""")
        with zipfile.ZipFile(path, "w") as archive:
            archive.write(package, "package.zip")
        reopened = []

        def reopen():
            self.device.reset()
            reopened.append(NodeMap.of(self.device))
            return reopened[-1]

        with oxgenapi.FirmwareUpdater(path) as updater:
            self.assertIn(("Version", "2.1.0"), [info[:2] for info in updater.entries[0]])
            updater.update(self.cam, 0, reopen)
            self.assertEqual(reopened[0].Width.value, 160)
            with self.assertRaises(ZeroDivisionError):
                updater.update(self.cam, 0, lambda: 1 // 0)
            with self.assertRaises(IndexError):
                updater.update(self.cam, 1, reopen)


class Cameras(unittest.TestCase):
    """Opened by the camera library; one test per name, because a simulated camera keeps its registers."""

    def setUp(self):
        os.environ.update(OXGENAPI_SIMULATED="Py1,user=gate;Py2,heartbeat=500", OXGENAPI_INTERFACES="lo")

    def test_one_is_found_opened_and_closed(self):
        found = [camera for camera in oxgenapi.cameras(0.05) if camera.transport == "simulated"]
        self.assertEqual([(c.serial, c.user_name, c.reach) for c in found],
                         [("Py1", "gate", oxgenapi.Reach.Free), ("Py2", "", oxgenapi.Reach.Free)])
        with oxgenapi.open("gate") as cam:
            self.assertEqual(cam.id, found[0].id)
            cam.Width.value = 320
            width = cam.Width
            self.assertEqual(cam.Width.value, 320)
            self.assertTrue(cam.description.startswith(b"<?xml"))
            with self.assertRaisesRegex(Error, "no network address"):
                cam.network
            with oxgenapi.open("Py1", read_only=True) as other:
                with self.assertRaisesRegex(Error, "was opened read only"):
                    other.write(0x7FFF00000000, bytes(4))
                self.assertEqual(other.last_failure.code, oxgenapi.CameraCode.READ_ONLY)
        with self.assertRaisesRegex(Error, "The camera is closed"):
            width.value = 640
        with self.assertRaisesRegex(Error, "fits several cameras"):
            oxgenapi.open("simulated")

    def test_images_are_arrays_in_place_that_keep_their_buffer(self):
        os.environ["OXGENAPI_SIMULATED"] = "Py3"
        with tempfile.TemporaryDirectory() as folder, oxgenapi.open("Py3") as cam:
            cam.Width.value, cam.Height.value = 64, 16
            self.assertEqual([(i.count, i.complete, len(i.data)) for i in cam.images(3)],
                             [(n, True, 64 * 16) for n in (1, 2, 3)])
            self.assertEqual(cam.stream_statistics["held"], 0)
            with self.assertRaisesRegex(Error, "No stream runs"):
                cam.next_image(0)
            memory = [bytearray(64 * 16), bytearray(64 * 16 + 5)]
            for image in cam.images(2, memory=memory):
                self.assertEqual([(part.kind.name, bytes(part.data)) for part in image.parts], [("Image", bytes(image.data))])
            self.assertIn(bytes(image.data), [bytes(each[:64 * 16]) for each in memory])
            with self.assertRaises(BufferError):
                memory[0].append(0)  # held as long as a picture may lie in it
            with self.assertRaises(Error):
                cam.start(memory=[bytearray(1), bytearray(1)])
            cam.EventSelector.value, cam.EventNotification.value = "Test", "On"
            cam.TestEventGenerate.execute()
            event = cam.next_event(5)
            self.assertEqual((int.from_bytes(event.payload[:8], "big"), list(cam.events(0))),
                             (cam.EventTestTimestamp.value, []))
            image = cam.grab()
            self.assertEqual(image.data[1], (image.data[0] + 1) % 256)
            self.assertEqual(Path(image.save(folder + "/a.pgm")).read_bytes()[-64 * 16:], bytes(image.data))
            view, before = image.data, bytes(image.data)
            image.release()
            with self.assertRaisesRegex(Error, "was given back"):
                image.data
            for _ in range(20):
                cam.grab().release()
            self.assertEqual((bytes(view), cam.stream_statistics["held"]), (before, 1))
            try:
                import numpy
            except ImportError:
                numpy = None
            if numpy is not None:
                image = cam.grab()
                array = image.array
                self.assertEqual((array.shape, str(array.dtype), bytes(array)), ((16, 64), "uint8", bytes(image.data)))
                self.assertEqual(image.convert(colour=True, bits=16)[3, 5].tolist(), [int(array[3, 5]) * 257] * 3)
                del array
            image.release()
            woken = []
            cam.TriggerMode.value = "On"
            for _ in range(20):  # what is on its way
                try:
                    cam.grab(0.1).release()
                except Error:
                    break
            waiter = threading.Thread(target=lambda: woken.append(outcome(lambda: cam.next_image(20))))
            waiter.start()
            start = time.monotonic()
            time.sleep(0.01)  # another thread runs while one waits
            self.assertLess(time.monotonic() - start, 1)
            cam.stop()
            waiter.join(5)
            self.assertEqual([error.code for error in woken], [oxgenapi.CameraCode.STOPPED])
        self.assertEqual(bytes(view), before)  # the memory outlives the camera
        del view

    def test_a_loss_is_told_and_the_camera_comes_back(self):
        reasons, told = [], threading.Event()
        with oxgenapi.open("Py2", heartbeat=0.2) as cam:
            width = cam.Width
            width.value = 320
            cam.on_loss(lambda reason: (reasons.append(reason), told.set()))
            cam.write(0x7FFF00000008, (200).to_bytes(4, "big"))  # unplugged for so many milliseconds
            self.assertTrue(cam.wait_for_loss(5) and told.wait(5))
            self.assertEqual(cam.state, oxgenapi.CameraState.Lost)
            cam.reopen(retry=5)
            self.assertEqual((cam.state, width.value), (oxgenapi.CameraState.Open, 640))
        self.assertEqual(len(reasons), 1)


class Library(unittest.TestCase):
    def test_numbers_are_those_of_the_header(self):
        source = Path(os.environ["OX_SOURCE_DIR"])
        made = subprocess.run([sys.executable, "-B", source / "python/header_numbers.py", source / "include/OxGenApi/Types.h",
                               source / "camera/include/OxCamera/CameraTypes.h", source / "camera/include/OxCamera/ImageTypes.h"],
                              capture_output=True, text=True, check=True).stdout
        self.assertEqual(made, (source / "python/oxgenapi/_numbers.py").read_text())

    def test_versions(self):
        self.assertEqual(oxgenapi.__version__, ".".join(map(str, oxgenapi.library_version())))
        self.assertEqual(oxgenapi.genapi_version()[:2], (3, 4))


if __name__ == "__main__":
    unittest.main()
