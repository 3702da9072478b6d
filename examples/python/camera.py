"""Opens a camera by any of its names and shows a feature: camera.py GV01, camera.py 192.168.0.20."""
import sys

import oxgenapi

with oxgenapi.open(sys.argv[1] if len(sys.argv) > 1 else "simulated") as cam:
    cam.Width.value = 320
    print("Width =", cam.Width.value)
