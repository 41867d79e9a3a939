-- Diesel exhaust driven by the engine: the emitter named aaaaaa smokes more, and darker, as the
-- engine's revolutions rise, and puffs when they climb quickly.
-- RPM and RPMDelta are set by the engine simulation's script.

local IDLE_RPM = 600
local MAX_RPM = 1500

function Initialise()
	Call("aaaaaa:SetEmitterActive", 1)
	Call("BeginUpdate")
end

local function Exhaust(emitter, rpm, delta)
	local load = math.max(0, math.min(1, (rpm - IDLE_RPM) / (MAX_RPM - IDLE_RPM)))
	local rate = 0.2 - load * 0.18
	local shade = 0.6 - load * 0.4
	if delta > 20 then
		rate = rate * 0.5
		shade = shade * 0.5
	end
	Call(emitter .. ":SetEmitterRate", rate)
	Call(emitter .. ":SetEmitterColour", shade, shade, shade)
end

function Update(time)
	local rpm = Call("*:GetControlValue", "RPM", 0) or IDLE_RPM
	local delta = Call("*:GetControlValue", "RPMDelta", 0) or 0
	Exhaust("aaaaaa", rpm, delta)
end
