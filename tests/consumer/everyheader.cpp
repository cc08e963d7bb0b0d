// SPDX-License-Identifier: MIT

// Every header in all its spellings. The umbrella header is last, so that it cannot hide a missing include.
#include <SondixQt/datablock.h>
#include <SondixQt/errorcode.h>
#include <SondixQt/errorvalue.h>
#include <SondixQt/interfaceparameters.h>
#include <SondixQt/namelookup.h>
#include <SondixQt/parameterpresentation.h>
#include <SondixQt/rs232tunnel.h>
#include <SondixQt/sensoraddress.h>
#include <SondixQt/sensorfeatures.h>
#include <SondixQt/sensorfinder.h>
#include <SondixQt/sensorinfo.h>
#include <SondixQt/sensorinstance.h>
#include <SondixQt/sensorreader.h>
#include <SondixQt/sensortypes.h>
#include <SondixQt/sondixqtglobal.h>
#include <SondixQt/sondixqtnamespace.h>
#include <SondixQt/specialsensorinstance.h>
#include <SondixQt/transmitteddatainfo.h>

#include <SondixQt/CommandResult>
#include <SondixQt/DataBlock>
#include <SondixQt/DataGap>
#include <SondixQt/ErrorCode>
#include <SondixQt/ErrorValue>
#include <SondixQt/InterfaceParameter>
#include <SondixQt/NameLookup>
#include <SondixQt/ParameterPresentation>
#include <SondixQt/Reconnect>
#include <SondixQt/RS232Tunnel>
#include <SondixQt/SensorAddress>
#include <SondixQt/SensorFeatures>
#include <SondixQt/SensorFinder>
#include <SondixQt/SensorGroup>
#include <SondixQt/SensorInfo>
#include <SondixQt/SensorInstance>
#include <SondixQt/SensorInterface>
#include <SondixQt/SensorReader>
#include <SondixQt/SensorType>
#include <SondixQt/SignalInfo>
#include <SondixQt/SpecialSensorInstance>
#include <SondixQt/SpecialSensorInstanceRG52x>
#include <SondixQt/SpecialSensorInstanceRG531>
#include <SondixQt/TransmittedDataInfo>
#include <SondixQt/VideoInfo>
#include <SondixQt/WebInterface>

#include <SondixQt/SondixQt>
