"""Takes a picture and saves it: grab.py GV01 picture.png. With numpy, image.array is the picture as an array."""
import sys

import oxgenapi

with oxgenapi.open(sys.argv[1] if len(sys.argv) > 1 else "simulated") as cam:
    for image in cam.images(3):
        print(f"image {image.count}: {image.width} x {image.height} {image.pixel_format}")
    if len(sys.argv) > 2:
        cam.grab().save(sys.argv[2])
