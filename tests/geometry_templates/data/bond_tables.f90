! The expected lines of tests/geometry_templates/bond_tables_test.cpp: distances,
! angles and dihedral angles computed here independently and written with the
! formats of the bond tables.  gfortran bond_tables.f90 -o bond_tables && ./bond_tables
program bond_tables
  implicit none
  real(8) :: w(3,3), p(3,4), f(3,6), c(3,4)
  w = reshape([0d0,0d0,0d0, 0d0,0.8d0,-0.6d0, 0d0,-0.8d0,-0.6d0],[3,3])
  p = reshape([-0.7d0,0d0,0d0, 0.7d0,0d0,0d0, -1.0d0,0.9d0,0d0, 1.0d0,0d0,0.9d0],[3,4])
  f = reshape([0d0,0d0,0d0, 0d0,0d0,1.58d0, 0d0,0d0,-1.58d0, 0d0,1.53d0,0d0, &
       -1.325d0,-0.765d0,0d0, 1.325d0,-0.765d0,0d0],[3,6])
  c = reshape([0d0,0d0,0d0, 0d0,0d0,1.18d0, 0d0,1.52d0,-0.9d0, 0d0,-1.52d0,-0.9d0],[3,4])
  print '(A)', '--- H2O'
  call l('r(O1-H2)       ', d(w(:,1),w(:,2)))
  call l('r(O1-H3)       ', d(w(:,1),w(:,3)))
  call a('#  Bond angle     ', 'a(H2-O1-H3)    ', ang(w(:,2),w(:,1),w(:,3)))
  print '(A)', '--- H2O2'
  call l('r(O1-O2)       ', d(p(:,1),p(:,2)))
  call l('r(O1-H3)       ', d(p(:,1),p(:,3)))
  call l('r(O2-H4)       ', d(p(:,2),p(:,4)))
  call a('#  Bond angle     ', 'a(O2-O1-H3)    ', ang(p(:,2),p(:,1),p(:,3)))
  call a('#  Bond angle     ', 'a(O1-O2-H4)    ', ang(p(:,1),p(:,2),p(:,4)))
  call a('#  Dihedral angle ', 'd(H3-O1-O2-H4) ', dih(p(:,3),p(:,1),p(:,2),p(:,4)))
  print '(A)', '--- PF5'
  call l('r(P1-F2)       ', d(f(:,1),f(:,2)))
  call l('r(P1-F4)       ', d(f(:,1),f(:,4)))
  call a('#  Bond angle     ', 'a(F2-P1-F4)    ', ang(f(:,2),f(:,1),f(:,4)))
  call a('#  Bond angle     ', 'a(F4-P1-F5)    ', ang(f(:,4),f(:,1),f(:,5)))
  print '(A)', '--- COCl2'
  call l('r(C1-O2)       ', d(c(:,1),c(:,2)))
  call l('r(C1-Cl3)      ', d(c(:,1),c(:,3)))
  call a('#  Bond angle     ', 'a(Cl3-C1-Cl4)  ', ang(c(:,3),c(:,1),c(:,4)))
  call a('#  Bond angle     ', 'a(O2-C1-Cl3)   ', ang(c(:,2),c(:,1),c(:,3)))
contains
  real(8) function d(x,y)
    real(8) :: x(3), y(3)
    d = sqrt(sum((x-y)**2))
  end function
  real(8) function ang(x,y,z)
    real(8) :: x(3), y(3), z(3), u(3), v(3)
    u = x-y; v = z-y
    ang = acos(sum(u*v)/sqrt(sum(u*u)*sum(v*v)))*180d0/acos(-1d0)
  end function
  real(8) function dih(x1,x2,x3,x4)
    real(8) :: x1(3),x2(3),x3(3),x4(3),b1(3),b2(3),b3(3),n1(3),n2(3)
    b1=x2-x1; b2=x3-x2; b3=x4-x3
    n1=[b1(2)*b2(3)-b1(3)*b2(2), b1(3)*b2(1)-b1(1)*b2(3), b1(1)*b2(2)-b1(2)*b2(1)]
    n2=[b2(2)*b3(3)-b2(3)*b3(2), b2(3)*b3(1)-b2(1)*b3(3), b2(1)*b3(2)-b2(2)*b3(1)]
    dih = atan2(sqrt(sum(b2*b2))*sum(b1*n2), sum(n1*n2))*180d0/acos(-1d0)
  end function
  subroutine l(lab, v)
    character(*) :: lab
    real(8) :: v
    write(*,'(A,A,A,F12.8,A)') '#  Bond length    ', lab, ' =', v, ' [A]'
  end subroutine
  subroutine a(kind, lab, v)
    character(*) :: kind, lab
    real(8) :: v
    write(*,'(A,A,A,F12.6,A)') kind, lab, ' =', v, ' [deg]'
  end subroutine
end program
