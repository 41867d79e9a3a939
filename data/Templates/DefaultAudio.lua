-- Engine simulation script: the engine's revolutions follow the regulator, and RPM and
-- RPMDelta carry them to the sounds and to the exhaust script of the locomotive.

local IDLE_RPM = 600
local MAX_RPM = 1500
local RISE_PER_SECOND = 150

local gRPM = IDLE_RPM

function Initialise()
	Call("BeginUpdate")
end

function Update(time)
	local regulator = Call("*:GetControlValue", "Regulator", 0) or 0
	local target = IDLE_RPM + regulator * (MAX_RPM - IDLE_RPM)
	local step = RISE_PER_SECOND * time
	local last = gRPM
	if gRPM < target then
		gRPM = math.min(target, gRPM + step)
	elseif gRPM > target then
		gRPM = math.max(target, gRPM - step)
	end
	Call("*:SetControlValue", "RPM", 0, gRPM)
	Call("*:SetControlValue", "RPMDelta", 0, time > 0 and (gRPM - last) / time or 0)
end
