// Engine simulations: the values of the physics grids in the order the simulator's own files
// hold them, and the curves they name as .dcsv tables beside them.

#include "context.h"

#include <cmath>
#include <initializer_list>
#include <map>
#include <tuple>
#include <utility>

namespace velmora::demo {

namespace {

using Values = std::initializer_list<std::pair<const char*, double>>;

void floats(XmlBuilder& x, Values values) {
    for (const auto& [name, value] : values)
        x.float32(name, value);
}

std::string curveXml(SplitMix& rng, const std::vector<std::pair<double, double>>& points) {
    XmlBuilder x("cCSVContainer", rng.id());
    x.open("CsvItem");
    for (const auto& [a, b] : points)
        x.open("cCSVItem", rng.id()).float32("X", a).float32("Y", b).str("Name", "").close();
    return x.finish();
}

void brakeControl(XmlBuilder& x, const char* cabControl) {
    x.open("Control").open("cBrakeControlBlueprint").str("CabControlName", cabControl);
    floats(x, {{"MaxQuickReleaseRate", 10}, {"EmergencyApplicationRate", 30}, {"MinimumReductionPressure", 7},
               {"FullServicePressureDrop", 26}, {"MaxPressureDropInNormalApplication", 26},
               {"MinContinuousServiceReleaseRate", 1}});
    x.close().close();
}

void brakeAssembly(XmlBuilder& x, const char* name, const char* cabControl, bool handbrake, bool steamTrainBrake) {
    x.open(name).open("cBrakeAssemblyBlueprint").str("EquipmentType", "eAirBrake");
    x.float32("MaxForcePercentOfVehicleWeight", handbrake ? 60 : 75);
    brakeControl(x, cabControl);
    if (handbrake)
        x.open("Handbrake").open("cHandbrakeBlueprint").float32("MaxForce", 20).close().close();
    x.str("GraduatedRelease", "eTrue").str("ProportionalBrake", "eFalse");
    floats(x, {{"MaxReleaseRate", 5}, {"MaxApplicationRate", 8}, {"MaxCylinderPressure", 72},
               {"PressureForMaxForce", 72}, {"MaxSystemPressure", 90}, {"MinSystemPressure", 0}});
    if (steamTrainBrake)
        x.float32("PressureUsedFromPipePerPoundGained", 0.4);
    x.close().close();
}

void braking(XmlBuilder& x, bool steam) {
    brakeAssembly(x, "LocoBrakeAssembly", "EngineBrakeControl", true, false);
    brakeAssembly(x, "TrainBrakeAssembly", "TrainBrakeControl", steam, steam);
    x.open("EmergencyBraking").open("cEmergencyBrakingBlueprint");
    floats(x, {{"TriggerRate", 10}, {"ReservoirPressure", 90}, {"ReservoirCapacity", 2}, {"ReservoirVolumeMultiplier", 1},
               {"ApplicationRate", 40}, {"ChargeRate", 2}});
    x.close().close();
    x.open("AuxiliaryBraking").open("cAuxiliaryBrakingBlueprint");
    floats(x, {{"MaxChargingRate", 3}, {"MaxReservoirPressure", 90}, {"PressureUsedFromPipePerPoundGained", 0.4},
               {"PressureGainedFromOnePipePounds", 2.5}});
    x.str("RetainerType", "eNone").str("TripleValve", "eTrue").float32("TripleValveRatio", 2.5);
    x.float32("RetainerSlowReleaseRate", 0.2).close().close();
}

void csv(XmlBuilder& x, const char* name, const std::string& file) {
    x.open(name).open("cCSVContainer").str("CsvFile", file).close().close();
}

void section(XmlBuilder& x, const char* name, const char* cls, Values values) {
    x.open(name).open(cls);
    floats(x, values);
    x.close().close();
}

// The curves of each kind: the row that names it, the file's last word, and its points.
using Curve = std::tuple<const char*, const char*, std::vector<std::pair<double, double>>>;

std::vector<std::pair<double, double>> sampled(int count, double step, double (*f)(double)) {
    std::vector<std::pair<double, double>> out;
    for (int i = 0; i < count; ++i)
        out.emplace_back(i * step, std::round(f(i * step) * 1000) / 1000);
    return out;
}

std::vector<Curve> curves(bool steam) {
    const auto speed = sampled(11, 10, [](double v) { return 1.0 - v * 0.0075; });
    if (steam)
        return {{"TractiveEffortVsCutoff", "TractiveEffortVsCutoff",
                 sampled(6, 0.15, [](double c) { return c < 0.01 ? 0.0 : std::pow(c / 0.75, 0.6); })},
                {"TractiveEffortLinearVsSpeed", "TractiveEffortLinearVsSpeed", speed},
                {"ConditionChangeVsTemp", "ConditionChangeVsTemp", sampled(6, 200, [](double t) { return (t - 500) / 5000; })},
                {"BurnRateVsSteamUsageRate", "BurnRateVsSteamUsageRate", sampled(6, 2, [](double s) { return s * 0.18; })}};
    return {{"TractiveForceVSpeed", "TractiveEffortVsSpeed", speed},
            {"TractiveEffortVThrottle", "TractiveEffortVsThrottle", sampled(9, 0.125, [](double t) { return std::pow(t, 1.3); })},
            {"BrakeEffortVsSpeed", "DynamicBrakeEffortVsSpeed",
             sampled(9, 10, [](double v) { return v < 20 ? v / 20 : 1.0 - (v - 20) * 0.008; })}};
}

void steamValues(XmlBuilder& x, const std::map<std::string, std::string>& files) {
    for (int n = 1; n <= 2; ++n) {
        x.open("Injector" + std::to_string(n)).open("cInjectorBlueprint").str("Type", n == 1 ? "eLiveSteam" : "eExhaustSteam");
        floats(x, {{"MinBoilerPressure", 40}, {"MinInjectorProportion", 0.1}, {"MaxInjectorProportion", 1}, {"Size", 10},
                   {"FeedRateMultiplier", 1}, {"PrimingFailureLevel", 0.95}, {"SteamUsageMultiplier", 1}});
        x.close().close();
    }
    x.str("TenderRequired", "eTrue");
    csv(x, "TractiveEffortVsCutoff", files.at("TractiveEffortVsCutoff"));
    csv(x, "TractiveEffortLinearVsSpeed", files.at("TractiveEffortLinearVsSpeed"));
    floats(x, {{"CutoffSteamUsageScaler", 1}, {"SpeedSteamUsageScaler", 1}, {"TotalSteamUsageScaler", 1},
               {"BasicSteamUsage", 0.5}});
    csv(x, "ConditionChangeVsTemp", files.at("ConditionChangeVsTemp"));
    csv(x, "BurnRateVsSteamUsageRate", files.at("BurnRateVsSteamUsageRate"));
    floats(x, {{"MinTemp", 300}, {"MaxTemp", 1300}, {"MaxFuelMass", 250}, {"IdealFuelMass", 180}, {"IdleFuelMass", 60},
               {"GrateLimit", 28}, {"BasicCoalUsageRate", 0.02}});
    x.str("ManuallyStoked", "eTrue");
    floats(x, {{"MinStokingRate", 0}, {"MaxStokingRate", 2}, {"MinStokingRateSteamUsage", 0},
               {"MaxStokingRateSteamUsage", 0}, {"MinOperatingPressureForStoker", 0}, {"SmokePerPoundOfFuel", 0.2},
               {"MaxSmokeRate", 4}});
    section(x, "Boiler", "cBoilerBlueprint",
            {{"Volume", 160}, {"MaxPressure", 225}, {"ExhaustLimit", 1}, {"BlastExponent", 0.5}, {"MaxOutput", 28},
             {"DraftingEffect", 1}, {"Effectiveness", 0.7}, {"MaxWaterHeightMultiple", 1.1}, {"MinPrimingLevel", 0.9},
             {"PrimingFactor", 0.5}, {"PrimingReductionWithCylinderCocksOpen", 0.5}, {"PrimingPowerLossProportion", 0.3},
             {"MaxWaterMass", 7500}, {"PrimingWaterUsageIncreaseProportion", 0.2}});
    section(x, "Superheater", "cSuperheaterBlueprint", {{"Responsiveness", 0.5}, {"Length", 12}, {"GaugeHeight", 0.8}});
    for (int n = 1; n <= 2; ++n)
        section(x, n == 1 ? "SafetyValve1" : "SafetyValve2", "cSafetyValveBlueprint",
                {{"PressureForOpen", 225.0 + n * 3}, {"PressureForClose", 220.0 + n * 3}, {"SteamUsage", 4}});
    x.open("Cylinders").open("cCylindersBlueprint").float32("CylinderCocksPowerEfficiency", 0.8);
    x.str("AutomatedCylinderCocks", "eFalse");
    floats(x, {{"NumCylinders", 2}, {"NumStrokes", 4}, {"Stroke", 0.711}, {"Diameter", 0.473}, {"Effectivity", 0.9}});
    x.close().close();
    section(x, "Blower", "cBlowerBlueprint",
            {{"EffectExponent", 0.5}, {"EfficiencyExponent", 0.5}, {"MaxSteamUsageRate", 0.4}, {"ProportionOfBlastEffect", 0.5}});
    x.open("Regulator").open("cRegulatorBlueprint").str("Type", "eSlide");
    floats(x, {{"SecondValveStartPos", 0.3}, {"PilotValveFullOpening", 0.2}, {"MainValveInitialOpening", 0.1}});
    x.close().close();
    x.open("Generator").open("cGeneratorBlueprint").str("Present", "eTrue");
    floats(x, {{"MinWorkingPressure", 60}, {"SteamUsageRate", 0.05}});
    x.close().close();
    for (const char* ejector : {"SmallEjector", "LargeEjector"}) {
        x.open(ejector).open("cEjectorBlueprint").str("Present", "eTrue");
        floats(x, {{"VacuumCreationRate", ejector[0] == 'S' ? 1.0 : 4.0}, {"MinBoilerPressureForMaxVacuum", 100},
                   {"BoilerPressureForZeroVacuum", 20}, {"SteamUsageRate", ejector[0] == 'S' ? 0.1 : 0.5}});
        x.close().close();
    }
    x.open("VacuumPump").open("cVacuumPumpBlueprint").str("Present", "eFalse");
    floats(x, {{"SpeedOfMaxEffect", 60}, {"Power", 1}, {"CompressorSteamUsageRate", 0}});
    x.close().close();
    x.open("SteamHeating").open("cSteamHeatingBlueprint").str("Present", "eTrue");
    floats(x, {{"MaxPressure", 80}, {"MaxSupplyRate", 0.2}, {"FuelBurnRate", 0.01}});
    x.close().close();
}

void tractionValues(XmlBuilder& x, const std::string& engineType, const std::map<std::string, std::string>& files) {
    csv(x, "TractiveForceVSpeed", files.at("TractiveForceVSpeed"));
    csv(x, "TractiveEffortVThrottle", files.at("TractiveEffortVThrottle"));
    floats(x, {{"AntiSlipBrakeCylinderPressure", 10}});
    x.str("HasThyristorControl", engineType == "Electric" ? "eTrue" : "eFalse").str("QuickPowerOffAtZeroThrottle", "eFalse");
    x.str("SlowSpeedFittedPresent", "eFalse");
    floats(x, {{"SlowSpeedFittedSpeedLimit", 3}, {"CylinderPressureForBrakeToCutPower", 30}, {"MaxContinuousForce", 260}});
    x.open("AirSystem").open("cAirSystemBlueprint").str("HasLowPressureTest", "eTrue");
    floats(x, {{"MinAirPressure", 60}, {"CutOutPressure", 140}, {"RestartPressure", 120}, {"ReservoirVolume", 60},
               {"MainResMaxAirPressure", 140}});
    x.close().close();
    x.open("Compressor").open("cCompressorBlueprint").str("Type", "eElectric").float32("PowerRating", 20).close().close();
    x.open("DynamicBrakesSystem").open("cDynamicBrakesBlueprint");
    floats(x, {{"DelayBeforeEngaging", 2}, {"MaxEffectiveSpeed", 75}, {"AutomaticCutInSpeed", 5}, {"MinimumUsableSpeed", 3},
               {"MaxForce", 200}, {"MaxResistorCurrent", 900}});
    csv(x, "BrakeEffortVsSpeed", files.at("BrakeEffortVsSpeed"));
    x.str("CausesAutoBailOff", "eTrue").close().close();
    if (engineType == "Diesel") {
        floats(x, {{"DieselUsedPerHourAtMaxPower", 500}, {"DieselUsedPerHourAtIdle", 20}, {"TimeToGetToMaxForce", 5},
                   {"MaxCurrent", 1200}, {"OverloadCurrent", 1500}});
        section(x, "PowerUnit", "cPowerUnitBlueprint",
                {{"IdleRPM", 340}, {"MaxRpm", 904}, {"MaxRpmChangePerSecond", 100}, {"MaxPowerAtRail", 2.2},
                 {"ThrottleSettleTime", 2}, {"AudioRpmAttackTime", 1}, {"AudioRpmHoldTime", 0.5},
                 {"AudioRpmReleaseTime", 1}});
    } else {
        floats(x, {{"TimeToGetToMaxForce", 3}, {"MaxCurrent", 1000}, {"OverloadCurrent", 1300}});
    }
}

} // namespace

bool writeEngineSimulation(Context& ctx, const std::string& P, const std::string& Q, const std::string& folder,
                           const std::string& file, const std::string& engineType, Ref& sim) {
    const bool steam = engineType == "Steam";
    sim = {P, Q, folder + "\\Simulation\\" + file + "_EngineSim.xml"};
    // The ids come from a stream of the simulation's own; the install's stream moves on by the
    // thirteen draws a simulation has always taken, so that what comes after (route and
    // scenario ids) stays the same whatever the simulation holds.
    SplitMix rng = ctx.rng.fork(0x51);
    for (int i = 1; i < 13; ++i)
        ctx.rng.next();
    std::map<std::string, std::string> files; // by the row that names the curve: the CsvFile value
    for (const auto& [row, word, points] : curves(steam)) {
        const std::string below = folder + "\\Simulation\\" + file + "_" + word;
        files[row] = P + "\\" + Q + "\\" + below + ".dcsv";
        if (!ctx.out.document(assetFile(P, Q, below, ".dcsv"), curveXml(rng, points)))
            return false;
    }
    XmlBuilder x("cBlueprintLoader", rng.id());
    x.open("Blueprint").open("cEngineSimBlueprint").str("Name", file + " simulation");
    x.open("EngineSimComponent").open(steam                      ? "cSteamEngineSimObjectBlueprint"
                                      : engineType == "Electric" ? "cElectricEngineSimObjectBlueprint"
                                                                 : "cDieselElectricEngineSimObjectBlueprint");
    braking(x, steam);
    floats(x, {{"MaxPower", steam ? 1.3 : 2.46}, {"MaxForce", steam ? 114 : 409}});
    x.str("Has3rdRailPowerSupply", "eFalse");
    floats(x, {{"MaxSpeed", steam ? 90 : 75}, {"StartupTime", 30}, {"ShutdownTime", 20}});
    if (steam)
        steamValues(x, files);
    else
        tractionValues(x, engineType, files);
    return ctx.out.blueprint(assetFile(sim), x.finish());
}

} // namespace velmora::demo
