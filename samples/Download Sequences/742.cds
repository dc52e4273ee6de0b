YES  model 742 has ramp profiles
4000 selects a profile
4002 creates and erases profiles and inserts steps
4040 number of steps of the selected profile, 0: no such profile
300 Set point 1
319 Set point 2
500 PID loop 1 set 1 proportional band
501 PID loop 1 set 1 integral
502 PID loop 1 set 1 derivative
503 PID loop 1 set 1 dead band
504 PID loop 1 set 1 hysteresis
505 PID loop 1 set 1 low output limit
506 PID loop 1 set 1 high output limit
507 PID loop 1 set 1 output kind
510 PID loop 1 set 2 proportional band
511 PID loop 1 set 2 integral
512 PID loop 1 set 2 derivative
513 PID loop 1 set 2 dead band
514 PID loop 1 set 2 hysteresis
515 PID loop 1 set 2 low output limit
516 PID loop 1 set 2 high output limit
517 PID loop 1 set 2 output kind
520 PID loop 1 set 3 proportional band
521 PID loop 1 set 3 integral
522 PID loop 1 set 3 derivative
523 PID loop 1 set 3 dead band
524 PID loop 1 set 3 hysteresis
525 PID loop 1 set 3 low output limit
526 PID loop 1 set 3 high output limit
527 PID loop 1 set 3 output kind
530 PID loop 1 set 4 proportional band
531 PID loop 1 set 4 integral
532 PID loop 1 set 4 derivative
533 PID loop 1 set 4 dead band
534 PID loop 1 set 4 hysteresis
535 PID loop 1 set 4 low output limit
536 PID loop 1 set 4 high output limit
537 PID loop 1 set 4 output kind
540 PID loop 1 set 5 proportional band
541 PID loop 1 set 5 integral
542 PID loop 1 set 5 derivative
543 PID loop 1 set 5 dead band
544 PID loop 1 set 5 hysteresis
545 PID loop 1 set 5 low output limit
546 PID loop 1 set 5 high output limit
547 PID loop 1 set 5 output kind
550 PID loop 2 set 1 proportional band
551 PID loop 2 set 1 integral
552 PID loop 2 set 1 derivative
553 PID loop 2 set 1 dead band
554 PID loop 2 set 1 hysteresis
555 PID loop 2 set 1 low output limit
556 PID loop 2 set 1 high output limit
557 PID loop 2 set 1 output kind
560 PID loop 2 set 2 proportional band
561 PID loop 2 set 2 integral
562 PID loop 2 set 2 derivative
563 PID loop 2 set 2 dead band
564 PID loop 2 set 2 hysteresis
565 PID loop 2 set 2 low output limit
566 PID loop 2 set 2 high output limit
567 PID loop 2 set 2 output kind
570 PID loop 2 set 3 proportional band
571 PID loop 2 set 3 integral
572 PID loop 2 set 3 derivative
573 PID loop 2 set 3 dead band
574 PID loop 2 set 3 hysteresis
575 PID loop 2 set 3 low output limit
576 PID loop 2 set 3 high output limit
577 PID loop 2 set 3 output kind
580 PID loop 2 set 4 proportional band
581 PID loop 2 set 4 integral
582 PID loop 2 set 4 derivative
583 PID loop 2 set 4 dead band
584 PID loop 2 set 4 hysteresis
585 PID loop 2 set 4 low output limit
586 PID loop 2 set 4 high output limit
587 PID loop 2 set 4 output kind
590 PID loop 2 set 5 proportional band
591 PID loop 2 set 5 integral
592 PID loop 2 set 5 derivative
593 PID loop 2 set 5 dead band
594 PID loop 2 set 5 hysteresis
595 PID loop 2 set 5 low output limit
596 PID loop 2 set 5 high output limit
597 PID loop 2 set 5 output kind
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
620 Input 2 sensor
621 Input 2 decimals
622 Input 2 units
623 Input 2 low limit
624 Input 2 high limit
625 Input 2 offset
626 Input 2 filter
627 Input 2 error latch
628 Input 2 scale low
629 Input 2 scale high
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
720 Output 3 function
721 Output 3 cycle time
722 Output 3 action
723 Output 3 low power limit
724 Output 3 high power limit
725 Output 3 power on failure
726 Output 3 process range
727 Output 3 duplex
730 Output 4 function
731 Output 4 cycle time
732 Output 4 action
733 Output 4 low power limit
734 Output 4 high power limit
735 Output 4 power on failure
736 Output 4 process range
737 Output 4 duplex
740 Output 5 function
741 Output 5 cycle time
742 Output 5 action
743 Output 5 low power limit
744 Output 5 high power limit
745 Output 5 power on failure
746 Output 5 process range
747 Output 5 duplex
750 Output 6 function
751 Output 6 cycle time
752 Output 6 action
753 Output 6 low power limit
754 Output 6 high power limit
755 Output 6 power on failure
756 Output 6 process range
757 Output 6 duplex
760 Output 7 function
761 Output 7 cycle time
762 Output 7 action
763 Output 7 low power limit
764 Output 7 high power limit
765 Output 7 power on failure
766 Output 7 process range
767 Output 7 duplex
770 Output 8 function
771 Output 8 cycle time
772 Output 8 action
773 Output 8 low power limit
774 Output 8 high power limit
775 Output 8 power on failure
776 Output 8 process range
777 Output 8 duplex
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
820 Alarm 3 source
821 Alarm 3 type
822 Alarm 3 low set point
823 Alarm 3 high set point
824 Alarm 3 hysteresis
825 Alarm 3 latching
826 Alarm 3 silencing
827 Alarm 3 logic
828 Alarm 3 delay
830 Alarm 4 source
831 Alarm 4 type
832 Alarm 4 low set point
833 Alarm 4 high set point
834 Alarm 4 hysteresis
835 Alarm 4 latching
836 Alarm 4 silencing
837 Alarm 4 logic
838 Alarm 4 delay
900 Event output 1 function
901 Event output 1 idle state
902 Event output 1 on delay
903 Event output 1 off delay
904 Event output 1 pulse
910 Event output 2 function
911 Event output 2 idle state
912 Event output 2 on delay
913 Event output 2 off delay
914 Event output 2 pulse
920 Event output 3 function
921 Event output 3 idle state
922 Event output 3 on delay
923 Event output 3 off delay
924 Event output 3 pulse
930 Event output 4 function
931 Event output 4 idle state
932 Event output 4 on delay
933 Event output 4 off delay
934 Event output 4 pulse
940 Event output 5 function
941 Event output 5 idle state
942 Event output 5 on delay
943 Event output 5 off delay
944 Event output 5 pulse
950 Event output 6 function
951 Event output 6 idle state
952 Event output 6 on delay
953 Event output 6 off delay
954 Event output 6 pulse
960 Event output 7 function
961 Event output 7 idle state
962 Event output 7 on delay
963 Event output 7 off delay
964 Event output 7 pulse
970 Event output 8 function
971 Event output 8 idle state
972 Event output 8 on delay
973 Event output 8 off delay
974 Event output 8 pulse
1000 Digital input 1 function
1001 Digital input 1 condition
1002 Digital input 2 function
1003 Digital input 2 condition
1004 Digital input 3 function
1005 Digital input 3 condition
1006 Digital input 4 function
1007 Digital input 4 condition
1008 Digital input 5 function
1009 Digital input 5 condition
1010 Digital input 6 function
1011 Digital input 6 condition
1012 Digital input 7 function
1013 Digital input 7 condition
1014 Digital input 8 function
1015 Digital input 8 condition
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
1200 Linearisation point 1 in
1201 Linearisation point 1 out
1202 Linearisation point 2 in
1203 Linearisation point 2 out
1204 Linearisation point 3 in
1205 Linearisation point 3 out
1206 Linearisation point 4 in
1207 Linearisation point 4 out
1208 Linearisation point 5 in
1209 Linearisation point 5 out
1210 Linearisation point 6 in
1211 Linearisation point 6 out
1212 Linearisation point 7 in
1213 Linearisation point 7 out
1214 Linearisation point 8 in
1215 Linearisation point 8 out
1216 Linearisation point 9 in
1217 Linearisation point 9 out
1218 Linearisation point 10 in
1219 Linearisation point 10 out
1220 Linearisation point 11 in
1221 Linearisation point 11 out
1222 Linearisation point 12 in
1223 Linearisation point 12 out
1224 Linearisation point 13 in
1225 Linearisation point 13 out
1226 Linearisation point 14 in
1227 Linearisation point 14 out
1228 Linearisation point 15 in
1229 Linearisation point 15 out
1230 Linearisation point 16 in
1231 Linearisation point 16 out
1232 Linearisation point 17 in
1233 Linearisation point 17 out
1234 Linearisation point 18 in
1235 Linearisation point 18 out
1236 Linearisation point 19 in
1237 Linearisation point 19 out
1238 Linearisation point 20 in
1239 Linearisation point 20 out
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
4120 Wait band of a profile that runs
4121 What a profile does after a power failure
