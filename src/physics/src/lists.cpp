#include "lists.h"

#include <initializer_list>

namespace velmora::physics::lists {

namespace {

using F = Field;

// Plain values in a row.
std::vector<F> values(std::initializer_list<const char*> names) {
    std::vector<F> out;
    for (const char* n : names)
        out.push_back({F::Value, n, "", {}, false});
    return out;
}

std::vector<F> operator+(std::vector<F> a, const std::vector<F>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

F value(const char* name, const char* key = "") { return {F::Value, name, key, {}, false}; }
F reference(const char* name) { return {F::Reference, name, "", {}, false}; }
F table(const char* name) { return {F::Table, name, "", {}, false}; }
F section(const char* name, std::vector<F> children) { return {F::Section, name, "", std::move(children), false}; }
F repeated(const char* name, std::vector<F> children, bool prefix = false) {
    return {F::Repeated, name, "", std::move(children), prefix};
}

std::vector<F> brakeControl() {
    return {section("Control", values({"CabControlName", "MaxQuickReleaseRate", "EmergencyApplicationRate",
                                       "MinimumReductionPressure", "FullServicePressureDrop",
                                       "MaxPressureDropInNormalApplication", "MinContinuousServiceReleaseRate"}))};
}

std::vector<F> brakeRest() {
    return values({"GraduatedRelease", "ProportionalBrake", "MaxReleaseRate", "MaxApplicationRate", "MaxCylinderPressure",
                   "PressureForMaxForce", "MaxSystemPressure", "MinSystemPressure"});
}

std::vector<F> brakes(bool steam) {
    const std::vector<F> handbrake = {section("Handbrake", values({"MaxForce"}))};
    std::vector<F> train = values({"EquipmentType", "MaxForcePercentOfVehicleWeight"}) + brakeControl();
    if (steam)
        train = train + handbrake + brakeRest() + values({"PressureUsedFromPipePerPoundGained"});
    else
        train = train + brakeRest();
    return {
        value("Name"),
        value("English"),
        section("LocoBrakeAssembly",
                values({"EquipmentType", "MaxForcePercentOfVehicleWeight"}) + brakeControl() + handbrake + brakeRest()),
        section("TrainBrakeAssembly", train),
        section("EmergencyBraking", values({"TriggerRate", "ReservoirPressure", "ReservoirCapacity",
                                            "ReservoirVolumeMultiplier", "ApplicationRate", "ChargeRate"})),
        section("AuxiliaryBraking",
                values({"MaxChargingRate", "MaxReservoirPressure", "PressureUsedFromPipePerPoundGained",
                        "PressureGainedFromOnePipePounds", "RetainerType", "TripleValve", "TripleValveRatio",
                        "RetainerSlowReleaseRate"})),
    };
}

std::vector<F> engineTop() {
    return values({"MaxPower", "MaxForce", "Has3rdRailPowerSupply", "MaxSpeed", "StartupTime", "ShutdownTime"});
}

std::vector<F> airSystem(const char* name) {
    return {section(name, values({"HasLowPressureTest", "MinAirPressure", "CutOutPressure", "RestartPressure",
                                  "ReservoirVolume", "MainResMaxAirPressure"}))};
}

std::vector<F> script() { return {section("ScriptComponent", values({"Name"}))}; }

std::vector<F> interior(const char* name) {
    return {section(name, {value("InteriorGeometryID"), value("NumberOfCabs"), reference("InteriorCamera"),
                           reference("CabOcclusion")})};
}

} // namespace

const std::vector<Field>& vehicleFields() {
    static const std::vector<F> list =
        std::vector<F>{value("Name", "English"), table("NumberingList"), reference("FrontCouplingBlueprintID"),
                       reference("RearCouplingBlueprintID")} +
        values({"Mass", "EaseOfDerailment", "FrontPivotX", "FrontPivotY", "BackPivotX", "BackPivotY",
                "CollisionCentreX", "CollisionCentreY", "CollisionWidth", "CollisionHeight", "CollisionLength",
                "DragCoefficient", "RollingFrictionCoefficient", "DryFriction", "WetFriction", "SnowFriction",
                "SandFrictionMultiplier"}) +
        std::vector<F>{repeated("Bogey", {value("BogeyPivotX"), value("BogeyPivotY"), reference("BogeyBlueprint")})} +
        values({"StopgoRemapper", "IntermediateRemapper", "ExpertRemapper", "BogieAudioControlName",
                "CouplingAudioControlName", "EngineType", "EngineName", "DriverPresent"}) +
        std::vector<F>{reference("HeadOutCameraBlueprint"), reference("PrimaryNamedTextureSet"),
                       reference("SecondaryNamedTextureSet")} +
        values({"GeometryID", "CollisionGeometryID", "Pickable", "ShadowType", "HeatHaze", "TexText"}) +
        std::vector<F>{repeated("ProjectedLightElement", values({"TextureID", "FOV", "Type"})), value("Instancable"),
                       section("DetailLevelGenerationRange", values({"HighestLevel_1isHighest", "LowestLevel_10isLowest"})),
                       repeated("AnimSet", values({"AnimationID", "AnimationName", "AnimateInEditor"})),
                       reference("EngineSimulationContainer"),
                       section("ControlContainerComponent",
                               interior("InteriorInterface") + interior("CarriageInteriorInterface") +
                                   std::vector<F>{repeated("ControlValues", values({"ControlName", "DefaultValue",
                                                                                   "MinimumValue", "MaximumValue"}))}),
                       repeated("Children", values({"ChildName"}))} +
        script() +
        std::vector<F>{section("CargoComponent", values({"Capacity", "BulkFreightType", "AnimationID"}) +
                                                     std::vector<F>{reference("CargoBlueprintID")})};
    return list;
}

const std::vector<Field>& dieselFields() {
    static const std::vector<F> list =
        brakes(false) + engineTop() + std::vector<F>{table("TractiveForceVSpeed"), table("TractiveEffortVThrottle")} +
        values({"AntiSlipBrakeCylinderPressure", "HasThyristorControl", "QuickPowerOffAtZeroThrottle",
                "SlowSpeedFittedPresent", "SlowSpeedFittedSpeedLimit", "CylinderPressureForBrakeToCutPower",
                "MaxContinuousForce"}) +
        airSystem("AirSystem") + std::vector<F>{section("Compressor", values({"Type", "PowerRating"}))} +
        std::vector<F>{section("DynamicBrakesSystem",
                               values({"DelayBeforeEngaging", "MaxEffectiveSpeed", "AutomaticCutInSpeed",
                                       "MinimumUsableSpeed", "MaxForce", "MaxResistorCurrent"}) +
                                   std::vector<F>{table("BrakeEffortVsSpeed"), value("CausesAutoBailOff")})} +
        values({"DieselUsedPerHourAtMaxPower", "DieselUsedPerHourAtIdle", "TimeToGetToMaxForce", "MaxCurrent",
                "OverloadCurrent"}) +
        std::vector<F>{table("TractiveEffortVFieldDivertProportion"),
                       section("PowerUnit", values({"IdleRPM", "MaxRpm", "MaxRpmChangePerSecond", "MaxPowerAtRail",
                                                    "ThrottleSettleTime", "AudioRpmAttackTime", "AudioRpmHoldTime",
                                                    "AudioRpmReleaseTime"})),
                       section("GearBox", values({"Gear", "EngineBraking", "CoastingResistance", "ForceForEngineSlowing",
                                                  "Automatic", "EngineBrakingForce", "ChangeUpPoint", "ChangeDownPoint",
                                                  "ActivationSpeed"}))} +
        script();
    return list;
}

const std::vector<Field>& steamFields() {
    static const std::vector<F> list =
        brakes(true) + engineTop() +
        std::vector<F>{repeated("Injector",
                                values({"Type", "MinBoilerPressure", "MinInjectorProportion", "MaxInjectorProportion",
                                        "Size", "FeedRateMultiplier", "PrimingFailureLevel", "SteamUsageMultiplier"}),
                                true),
                       value("TenderRequired"), table("TractiveEffortVsCutoff"), table("TractiveEffortLinearVsSpeed")} +
        values({"CutoffSteamUsageScaler", "SpeedSteamUsageScaler", "TotalSteamUsageScaler", "BasicSteamUsage"}) +
        std::vector<F>{table("ConditionChangeVsTemp"), table("BurnRateVsSteamUsageRate")} +
        values({"MinTemp", "MaxTemp", "MaxFuelMass", "IdealFuelMass", "IdleFuelMass", "GrateLimit", "BasicCoalUsageRate",
                "ManuallyStoked", "MinStokingRate", "MaxStokingRate", "MinStokingRateSteamUsage",
                "MaxStokingRateSteamUsage", "MinOperatingPressureForStoker", "SmokePerPoundOfFuel", "MaxSmokeRate"}) +
        std::vector<F>{
            section("Boiler", values({"Volume", "MaxPressure", "ExhaustLimit", "BlastExponent", "MaxOutput",
                                      "DraftingEffect", "Effectiveness", "MaxWaterHeightMultiple", "MinPrimingLevel",
                                      "PrimingFactor", "PrimingReductionWithCylinderCocksOpen",
                                      "PrimingPowerLossProportion", "MaxWaterMass",
                                      "PrimingWaterUsageIncreaseProportion"})),
            section("Superheater", values({"Responsiveness", "Length", "GaugeHeight"})),
            repeated("SafetyValve", values({"PressureForOpen", "PressureForClose", "SteamUsage"}), true),
            section("Cylinders", values({"CylinderCocksPowerEfficiency", "AutomatedCylinderCocks", "NumCylinders",
                                         "NumStrokes", "Stroke", "Diameter", "Effectivity"})),
            section("Blower", values({"EffectExponent", "EfficiencyExponent", "MaxSteamUsageRate", "ProportionOfBlastEffect"})),
            section("Regulator", values({"Type", "SecondValveStartPos", "PilotValveFullOpening", "MainValveInitialOpening"})),
            section("Generator", values({"Present", "MinWorkingPressure", "SteamUsageRate"}))} +
        airSystem("CompressorEjector") +
        std::vector<F>{
            section("SmallEjector", values({"Present", "VacuumCreationRate", "MinBoilerPressureForMaxVacuum",
                                            "BoilerPressureForZeroVacuum", "SteamUsageRate"})),
            section("LargeEjector", values({"Present", "VacuumCreationRate", "MinBoilerPressureForMaxVacuum",
                                            "BoilerPressureForZeroVacuum", "SteamUsageRate"})),
            section("VacuumPump", values({"Present", "SpeedOfMaxEffect", "Power", "CompressorSteamUsageRate"})),
            section("SteamHeating", values({"Present", "MaxPressure", "MaxSupplyRate", "FuelBurnRate"}))} +
        script();
    return list;
}

} // namespace velmora::physics::lists
