"""Saves settings as text, changes a feature, and loads them again with each value read back."""

import oxgenapi

with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    cam.Width.value = 320
    settings = cam.settings(["Width", "Gain"])
    print(settings, end="")

    cam.Width.value = 640
    problems = cam.load_settings_text(settings, validate=True)
    for problem in problems:
        print("problem:", problem)
    print(len(problems), "problems, Width =", cam.Width.value)
