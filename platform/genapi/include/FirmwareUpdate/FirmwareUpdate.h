// Everything of the firmware update.
#pragma once
#include "FirmwareUpdate/Destructible.h"
#include "FirmwareUpdate/FirmwareUpdatableDevice.h"
#include "FirmwareUpdate/FirmwareUpdateDefaultInfoCollector.h"
#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "FirmwareUpdate/FirmwareUpdateInfo.h"
#include "FirmwareUpdate/FirmwareUpdateInfoCollector.h"
#include "FirmwareUpdate/FirmwareUpdateProgressObserver.h"
#include "FirmwareUpdate/FirmwareUpdater.h"
