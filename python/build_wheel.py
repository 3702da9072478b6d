"""What pip asks to build this package: a wheel is an archive of the package's files and three lists. No other package
is needed, so it installs without a network and in an empty virtual environment.

OXGENAPI_WHEEL_LIBRARIES: a folder with the installed libraries; the wheel then carries them and what they need that not
every system has, and fits this kind of machine only."""

import base64
import hashlib
import os
import re
import subprocess
import sysconfig
import zipfile
from pathlib import Path

FOLDER = Path(__file__).parent
FACTS = dict(re.findall(r'^([\w-]+) = "(.*)"$', (FOLDER / "pyproject.toml").read_text(), re.M))
NAME = f"{FACTS['name']}-{FACTS['version']}"
OURS = re.compile(r"libOx\w+\.so\.\d+")
EVERYWHERE = re.compile(r"lib(c|m|dl|rt|pthread|gcc_s|stdc\+\+)\.")


def _notices(library):
    """The licence of a library, where Debian keeps it."""
    found = subprocess.run(["dpkg", "-S", os.path.realpath(library)], capture_output=True, text=True).stdout
    notice = Path("/usr/share/doc", found.split(":")[0], "copyright")
    return {f"{NAME}.dist-info/licenses/{found.split(':')[0]}": notice.read_bytes()} if found and notice.exists() else {}


def _libraries(folder):
    files = {}
    for library in sorted(path for path in Path(folder).iterdir() if OURS.fullmatch(path.name)):
        files[f"oxgenapi/lib/{library.name}"] = library.read_bytes()
        needed = subprocess.run(["ldd", library], capture_output=True, text=True, check=True).stdout
        for name, path in re.findall(r"^\s+(\S+) => (\S+)", needed, re.M):
            if not OURS.fullmatch(name) and not EVERYWHERE.match(name):
                files[f"oxgenapi/lib/{name}"] = Path(path).read_bytes()
                files.update(_notices(path))
    if not files:
        raise FileNotFoundError(f"no libraries in {folder}")
    for module in sorted(Path(folder, "oxgenapi").glob("*")):  # the transports; aravis stays the system's
        files[f"oxgenapi/lib/oxgenapi/{module.name}"] = module.read_bytes()
    return files


def _write(folder, files, tag="py3-none-any"):
    name = f"{NAME}-{tag}.whl"
    info = NAME + ".dist-info/"
    metadata = (f"Metadata-Version: 2.1\nName: {FACTS['name']}\nVersion: {FACTS['version']}\n"
                f"Summary: {FACTS['description']}\nRequires-Python: {FACTS['requires-python']}\n")
    pure = str(tag.endswith("any")).lower()
    files[info + "METADATA"] = metadata.encode()
    files[info + "WHEEL"] = f"Wheel-Version: 1.0\nGenerator: oxgenapi\nRoot-Is-Purelib: {pure}\nTag: {tag}\n".encode()
    record = ""
    for path, content in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).decode().rstrip("=")
        record += f"{path},sha256={digest},{len(content)}\n"
    files[info + "RECORD"] = (record + info + "RECORD,,\n").encode()
    with zipfile.ZipFile(Path(folder, name), "w", zipfile.ZIP_DEFLATED) as archive:
        for path, content in files.items():
            entry = zipfile.ZipInfo(path)
            entry.external_attr = (0o755 if path.startswith("oxgenapi/lib/") else 0o644) << 16
            archive.writestr(entry, content, zipfile.ZIP_DEFLATED)
    return name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    sources = sorted(path for path in (FOLDER / "oxgenapi").iterdir() if path.is_file())
    files = {f"oxgenapi/{path.name}": path.read_bytes() for path in sources}
    libraries = os.environ.get("OXGENAPI_WHEEL_LIBRARIES")
    if not libraries:
        return _write(wheel_directory, files)
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return _write(wheel_directory, {**files, **_libraries(libraries)}, f"py3-none-{platform}")


def build_editable(wheel_directory, config_settings=None, metadata_directory=None):
    return _write(wheel_directory, {"oxgenapi.pth": f"{FOLDER.resolve()}\n".encode()})
