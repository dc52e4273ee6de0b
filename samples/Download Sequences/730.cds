NO   model 730 has no ramp profiles
-
-
-
300 Set point 1
500 PID loop 1 set 1 proportional band
501 PID loop 1 set 1 integral
502 PID loop 1 set 1 derivative
503 PID loop 1 set 1 dead band
504 PID loop 1 set 1 hysteresis
505 PID loop 1 set 1 low output limit
506 PID loop 1 set 1 high output limit
507 PID loop 1 set 1 output kind
600 Input 1 sensor
601 Input 1 decimals
602 Input 1 units
603 Input 1 low limit
604 Input 1 high limit
605 Input 1 offset
606 Input 1 filter
607 Input 1 error latch
608 Input 1 scale low
609 Input 1 scale high
700 Output 1 function
701 Output 1 cycle time
702 Output 1 action
703 Output 1 low power limit
704 Output 1 high power limit
705 Output 1 power on failure
706 Output 1 process range
707 Output 1 duplex
710 Output 2 function
711 Output 2 cycle time
712 Output 2 action
713 Output 2 low power limit
714 Output 2 high power limit
715 Output 2 power on failure
716 Output 2 process range
717 Output 2 duplex
800 Alarm 1 source
801 Alarm 1 type
802 Alarm 1 low set point
803 Alarm 1 high set point
804 Alarm 1 hysteresis
805 Alarm 1 latching
806 Alarm 1 silencing
807 Alarm 1 logic
808 Alarm 1 delay
810 Alarm 2 source
811 Alarm 2 type
812 Alarm 2 low set point
813 Alarm 2 high set point
814 Alarm 2 hysteresis
815 Alarm 2 latching
816 Alarm 2 silencing
817 Alarm 2 logic
818 Alarm 2 delay
1000 Digital input 1 function
1001 Digital input 1 condition
1002 Digital input 2 function
1003 Digital input 2 condition
1004 Digital input 3 function
1005 Digital input 3 condition
1006 Digital input 4 function
1007 Digital input 4 condition
1060 Digital input 1 text, character 1
1061 Digital input 1 text, character 2
1062 Digital input 1 text, character 3
1063 Digital input 1 text, character 4
1064 Digital input 1 text, character 5
1065 Digital input 1 text, character 6
1066 Digital input 1 text, character 7
1067 Digital input 1 text, character 8
1075 Digital input 2 text, character 1
1076 Digital input 2 text, character 2
1077 Digital input 2 text, character 3
1078 Digital input 2 text, character 4
1079 Digital input 2 text, character 5
1080 Digital input 2 text, character 6
1081 Digital input 2 text, character 7
1082 Digital input 2 text, character 8
1100 Static set point 1
1101 Static set point 2
1102 Static set point 3
1103 Static set point 4
1104 Static set point 5
1105 Static set point 6
1106 Static set point 7
1107 Static set point 8
1108 Static set point 9
1109 Static set point 10
1400 Lock level
1401 Device address, after a restart
1402 Baud rate choice, after a restart
1500 Display offset
1501 Display contrast
1502 Display line 1
1503 Display line 2
1520 Analogue option (-32000 where not fitted)
1521 Remote set point (-32001 where not configured)
1522 Calibration date (-32002 where not set)
1900 32-bit batch number, high word
1901 32-bit batch number, low word
