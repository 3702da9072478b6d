"""What pip asks to build this package: a wheel is an archive of the package's files and three lists. No other package
is needed, so it installs without a network and in an empty virtual environment."""

import base64
import hashlib
import re
import zipfile
from pathlib import Path

FOLDER = Path(__file__).parent
FACTS = dict(re.findall(r'^([\w-]+) = "(.*)"$', (FOLDER / "pyproject.toml").read_text(), re.M))
NAME, TAG = f"{FACTS['name']}-{FACTS['version']}", "py3-none-any"


def _write(folder, files):
    name = f"{NAME}-{TAG}.whl"
    info = NAME + ".dist-info/"
    metadata = (f"Metadata-Version: 2.1\nName: {FACTS['name']}\nVersion: {FACTS['version']}\n"
                f"Summary: {FACTS['description']}\nRequires-Python: {FACTS['requires-python']}\n")
    files[info + "METADATA"] = metadata.encode()
    files[info + "WHEEL"] = f"Wheel-Version: 1.0\nGenerator: oxgenapi\nRoot-Is-Purelib: true\nTag: {TAG}\n".encode()
    record = ""
    for path, content in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).decode().rstrip("=")
        record += f"{path},sha256={digest},{len(content)}\n"
    files[info + "RECORD"] = (record + info + "RECORD,,\n").encode()
    with zipfile.ZipFile(Path(folder, name), "w", zipfile.ZIP_DEFLATED) as archive:
        for path, content in files.items():
            archive.writestr(path, content)
    return name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    sources = sorted(path for path in (FOLDER / "oxgenapi").iterdir() if path.is_file())
    return _write(wheel_directory, {f"oxgenapi/{path.name}": path.read_bytes() for path in sources})


def build_editable(wheel_directory, config_settings=None, metadata_directory=None):
    return _write(wheel_directory, {"oxgenapi.pth": f"{FOLDER.resolve()}\n".encode()})
