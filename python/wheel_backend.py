"""Packs the package into a wheel for pip, so that installing it takes no network and no tools.

It knows of pyproject.toml what it needs: name, version, description, requires-python.
"""

from __future__ import annotations

import base64
import hashlib
import re
import zipfile
from pathlib import Path
from typing import Any, Optional

HERE = Path(__file__).resolve().parent


def _project() -> dict[str, str]:
    text = (HERE / "pyproject.toml").read_text("utf-8")
    section = text.partition("[project]")[2]
    return dict(re.findall(r'^([a-z-]+) = "(.*)"$', section, re.MULTILINE))


def build_wheel(wheel_directory: str, config_settings: Optional[dict[str, Any]] = None,
                metadata_directory: Optional[str] = None) -> str:
    project = _project()
    label = f"{project['name']}-{project['version']}"
    files = {f"signalscope/{path.name}": path.read_bytes()
             for path in sorted((HERE / "signalscope").iterdir())
             if path.suffix == ".py" or path.name == "py.typed"}
    files[f"{label}.dist-info/METADATA"] = (
        f"Metadata-Version: 2.1\nName: {project['name']}\nVersion: {project['version']}\n"
        f"Summary: {project['description']}\nRequires-Python: {project['requires-python']}\n"
    ).encode()
    files[f"{label}.dist-info/WHEEL"] = (
        b"Wheel-Version: 1.0\nGenerator: wheel_backend\nRoot-Is-Purelib: true\n"
        b"Tag: py3-none-any\n")
    record = f"{label}.dist-info/RECORD"
    files[record] = "".join([*(f"{name},sha256={_digest(data)},{len(data)}\n"
                               for name, data in files.items()), f"{record},,\n"]).encode()
    wheel = f"{label}-py3-none-any.whl"
    with zipfile.ZipFile(Path(wheel_directory) / wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():
            archive.writestr(name, data)
    return wheel


def _digest(data: bytes) -> str:
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
